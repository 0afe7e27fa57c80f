// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <span>

namespace vantiro {

/// Gives what is played, on the platform's audio thread, one call at a time.
class PlaybackSource {
public:
    virtual ~PlaybackSource() = default;

    PlaybackSource(const PlaybackSource&) = delete;
    PlaybackSource& operator=(const PlaybackSource&) = delete;

    /// Writes the next whole frames, interleaved 32-bit floats where 1.0 is full scale; all of `samples` is written.
    /// RT safe.
    virtual void fill(std::span<float> samples) noexcept = 0;

protected:
    PlaybackSource() = default;
};

/// One opened output. It follows the system's choice of an output, and asks the source for audio as long as it is
/// active and something listens. Destroying it lets go of the source.
class PlaybackStream {
public:
    struct Request {
        double sampleRate = 0;  ///< Hz, of what the source gives.
        int channels = 0;       ///< From 1 to 64; one is heard on both sides.
        QString output = {};    ///< A device's UID; empty, or one that is not there, means the system's default.
    };

    virtual ~PlaybackStream() = default;

    PlaybackStream(const PlaybackStream&) = delete;
    PlaybackStream& operator=(const PlaybackStream&) = delete;

    /// False for good once the audio service let go of the stream; a new one may be opened. Any thread.
    [[nodiscard]] virtual bool isAlive() const = 0;
    /// An output that is not active lets its device rest, if not at once: until then it still asks. It is active after
    /// it was opened.
    virtual void setActive(bool active) = 0;

protected:
    PlaybackStream() = default;
};

}  // namespace vantiro
