// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"
#include "core/sources/Preflight.h"
#include "core/sources/SourceMemory.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace vantiro {

/// The disk that a folder lies on, or would lie on.
struct VolumeFacts {
    std::optional<std::int64_t> freeBytes = std::nullopt;  ///< Absent if unknown.
    std::optional<QString> missingVolume = std::nullopt;   ///< The disk's name, if it is not mounted.

    bool operator==(const VolumeFacts&) const = default;
};

/// Where the facts before a take come from.
namespace PreflightFacts {

    /// Looks at the nearest folder above that exists. May wait for a slow disk. Any thread.
    [[nodiscard]] VolumeFacts volume(const QString& folder);

    /// The mount point that a folder on a removable disk needs: "/Volumes/NAME", "/media/USER/NAME" or
    /// "/run/media/USER/NAME"; nothing for a folder elsewhere. Any thread.
    [[nodiscard]] std::optional<QString> removableMountPoint(const QString& folder, const QString& user);

    /// The source can be opened now. Any thread.
    [[nodiscard]] bool isConnected(AudioPlatform& audio, const SourceRef& source);

    /// What is measured, and how the source is called.
    struct Measured {
        QString sourceName;
        std::optional<float> peakDB = std::nullopt;
        std::optional<double> tapRate = std::nullopt;  ///< The rate in Hz of a capture of an application.
    };

    /// The facts about a source now. The rate of its last take is among them only if another program holds a device to
    /// its present rate: else the take would run at the device's own, and a difference means nothing. Any thread.
    [[nodiscard]] PreflightInput input(AudioPlatform& audio, const SourceMemory& memory, const SourceRef& source,
        const Measured& measured, const VolumeFacts& volume);

}  // namespace PreflightFacts

}  // namespace vantiro
