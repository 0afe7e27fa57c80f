// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>

namespace vantiro {

/// A program that was started to outlive this one: in a session of its own, so that no terminal and no logout of ours
/// ends it, and with none of our descriptors and signal settings. A thread waits for its end for as long as this
/// process lives, so no zombie stays; dropping the object leaves the program alone. Any thread.
class LaunchedTool {
public:
    /// Runs the program at this path with standard input from the null device and everything that it prints into
    /// `output`, which stays the caller's. Environment and working folder are ours. The failure is a SystemError.
    [[nodiscard]] static Result<LaunchedTool> launch(const QString& program, const QStringList& arguments, int output);

    [[nodiscard]] std::int32_t pid() const noexcept;
    [[nodiscard]] bool isRunning() const;
    /// Sends SIGTERM, unless the program has ended.
    void terminate() const;

private:
    struct Child;
    explicit LaunchedTool(std::shared_ptr<Child> child);

    std::shared_ptr<Child> m_child;
};

}  // namespace vantiro
