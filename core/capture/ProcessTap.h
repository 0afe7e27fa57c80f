// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"

#include <QString>

#include <cstdint>
#include <memory>

namespace vantiro {

/// A program's sound as one more input: a private device that a Capture opens by its UID. The user goes on hearing the
/// program as before. Ends with close(), after the Capture on it has stopped.
class ProcessTap {
public:
    /// Which of a program's channels a tap delivers.
    enum class Scope {
        mixdown,       ///< Stereo, always.
        deviceStream,  ///< The channels of the program's device, if it plays to one.
        automatic,     ///< Those of the device if it has more than two, or if there are several; else stereo.
    };

    /// Every tap's UID begins so. A list of devices for the user leaves such UIDs out.
    static constexpr QLatin1StringView aggregateUIDPrefix{"vantiro-tap-"};

    /// Fails with "no audio process with pid {pid}", "cannot tap {name}: {errno}", or "the tap on {name} reports no
    /// format: {errno}".
    [[nodiscard]] static Result<std::unique_ptr<ProcessTap>> open(AudioPlatform& audio, std::int32_t pid, Scope scope);
    /// The same for the program with this identifier, automatic. Fails with "no audio process with bundle ID {id}".
    [[nodiscard]] static Result<std::unique_ptr<ProcessTap>> open(AudioPlatform& audio, const QString& bundleID);

    [[nodiscard]] const AudioProcess& process() const { return m_process; }
    [[nodiscard]] const QString& aggregateUID() const { return m_aggregateUID; }
    [[nodiscard]] double sampleRate() const { return m_sampleRate; }
    [[nodiscard]] std::int64_t channels() const { return m_channels; }
    /// The tap delivers the device's own channels, and not a stereo mixdown.
    [[nodiscard]] bool keepsChannels() const { return m_keepsChannels; }

    /// Lets go of the program. May be called again.
    void close() { m_tap.reset(); }

private:
    ProcessTap() = default;

    AudioProcess m_process;
    QString m_aggregateUID;
    double m_sampleRate = 0;
    std::int64_t m_channels = 0;
    bool m_keepsChannels = false;
    std::unique_ptr<AudioTap> m_tap;
};

}  // namespace vantiro
