// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace vantiro {

/// A program that the audio system knows, as it stood when it was read.
struct AudioProcess {
    std::int32_t pid = 0;             ///< Always above 0.
    std::optional<QString> bundleID;  ///< The program's identifier, the same at each start.
    QString name;                     ///< As shown to the user.
    bool isPlaying = false;           ///< It is now sending audio somewhere.

    bool operator==(const AudioProcess&) const = default;

    /// Keys are named as the fields; an absent identifier is an absent key.
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Result<AudioProcess> fromJson(const QJsonObject& object);
};

namespace AudioProcesses {

    /// By name, without regard to case and as the locale has it, then by pid.
    void sort(std::vector<AudioProcess>& processes);

    /// Those that are playing, in the same order.
    [[nodiscard]] std::vector<AudioProcess> playing(std::vector<AudioProcess> processes);

    /// The program with this identifier, whatever the case: the first that is playing, else the first.
    [[nodiscard]] std::optional<AudioProcess> withBundleID(
        const std::vector<AudioProcess>& processes, const QString& bundleID);

    /// The program with this process id.
    [[nodiscard]] std::optional<AudioProcess> withPid(const std::vector<AudioProcess>& processes, std::int32_t pid);

    /// The program with this identifier, or, since one without any goes by its pid, the one with this number.
    [[nodiscard]] std::optional<AudioProcess> withID(const std::vector<AudioProcess>& processes, const QString& id);

}  // namespace AudioProcesses

}  // namespace vantiro
