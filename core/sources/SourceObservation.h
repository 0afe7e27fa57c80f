// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/sources/SourceRef.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace vantiro {

/// What is known of a source at one moment. For an application `transport` and `inputTerminal` are empty; for a device
/// `isKnownDJApp` and `isPlaying` are false. The words are those of AudioDevice.
struct SourceObservation {
    SourceRef ref;
    QString name;  ///< As shown to the user.
    QString transport = {};
    std::int64_t channels = 0;                   ///< Input channels of a device; 2 for an application.
    std::optional<float> peakDB = std::nullopt;  ///< Level heard while listening, in dB; absent if nobody listened.
    bool isKnownDJApp = false;
    bool isPlaying = false;
    QString inputTerminal = {};
    bool steadyTone = false;  ///< What was heard is one steady tone, such as timecode.

    bool operator==(const SourceObservation&) const = default;

    /// Whether the source is a microphone. The only place that decides this. A jack built into the computer counts as
    /// one even if it calls itself a line input; a virtual device never does.
    [[nodiscard]] bool isMicrophone() const;
};

}  // namespace vantiro
