// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vantiro {

/// Whether the system lets this program hear audio inputs.
class AudioPermission {
public:
    enum class Answer {
        notDetermined,  ///< Nobody has been asked yet.
        denied,
        allowed,
    };

    virtual ~AudioPermission() = default;

    AudioPermission(const AudioPermission&) = delete;
    AudioPermission& operator=(const AudioPermission&) = delete;

    /// The answer as it stands. Never waits. Any thread.
    [[nodiscard]] virtual Answer status() = 0;
    /// Asks the user, if that is still open, and waits for the answer; never `notDetermined`. Any thread but the main
    /// one.
    [[nodiscard]] virtual Answer request() = 0;

protected:
    AudioPermission() = default;
};

}  // namespace vantiro
