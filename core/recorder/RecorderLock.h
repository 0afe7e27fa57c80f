// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/FileDescriptor.h"

#include <QString>

#include <chrono>
#include <optional>

namespace vantiro {

/// The lock that proves that a recorder is alive. The kernel drops it with the process, so a lock file left behind is
/// harmless; the file is never removed. It belongs to the open file, so a second lock in the same process fails too,
/// and no child process inherits it. Any thread.
class RecorderLock {
public:
    /// Takes the lock, making the file and its folder; nothing if somebody holds it or the file cannot be opened.
    [[nodiscard]] static std::optional<RecorderLock> acquire(const QString& path);

    /// acquire(), again and again for this long: whoever looks whether the lock is free holds it for a moment, and a
    /// recorder must not fail for that. Blocks.
    [[nodiscard]] static std::optional<RecorderLock> acquireWithin(
        const QString& path, std::chrono::milliseconds limit);

    /// Whether somebody holds the lock. A file that cannot be opened counts as held.
    [[nodiscard]] static bool isHeld(const QString& path);

    /// Releases the lock.
    ~RecorderLock();

    RecorderLock(RecorderLock&& other) noexcept = default;
    RecorderLock& operator=(RecorderLock&& other) noexcept;
    RecorderLock(const RecorderLock&) = delete;
    RecorderLock& operator=(const RecorderLock&) = delete;

private:
    explicit RecorderLock(FileDescriptor descriptor) noexcept;

    FileDescriptor m_descriptor;
};

}  // namespace vantiro
