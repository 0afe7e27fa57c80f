// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/platform/AudioPlatform.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <utility>

namespace vantiro {

/// Plays one file: a thread of its own reads ahead, the platform's audio thread takes what is read, and the levels are
/// those of what was handed out. What is played is the file's own samples, neither faded nor scaled. It begins paused.
/// The main thread, unless another one is named; nothing here waits for the disk.
class TakePlayer {
public:
    /// Opens the file, reads its beginning, and opens an output (a device's UID; empty for the system's default). Waits
    /// for the disk. The failure tells what is wrong with the file. An output that cannot be opened is none:
    /// isConnected() tells. Any thread but the main one. The platform outlives the player.
    [[nodiscard]] static Result<std::unique_ptr<TakePlayer>> open(
        const QString& path, AudioPlatform& audio, const QString& output);
    ~TakePlayer();

    TakePlayer(const TakePlayer&) = delete;
    TakePlayer& operator=(const TakePlayer&) = delete;

    [[nodiscard]] double duration() const;  ///< Seconds.
    /// Seconds from the beginning: of what was handed out last, or where the latest seek went.
    [[nodiscard]] double currentTime() const;
    /// Goes on at that many seconds, held to the take's length, also while paused.
    void seek(double seconds);
    void play();
    void pause();
    /// The whole rest was handed out and had time to be heard, or the file gives nothing more. A seek takes it back.
    [[nodiscard]] bool hasEnded() const;
    /// What hasEnded() tells is no end of the take: the disk gives nothing more.
    [[nodiscard]] bool hasFailed() const;
    /// The highest magnitudes (1.0 is full scale) that were handed out on the first and the second channel since the
    /// last call; those of a mono file are equal.
    [[nodiscard]] std::pair<float, float> takePeaks();
    /// How often audio was asked for so far: while playing it grows as long as something listens.
    [[nodiscard]] std::uint64_t cycles() const;
    /// An output is open. If the audio service went away, reconnect() opens another one.
    [[nodiscard]] bool isConnected() const;
    /// Goes on at another output, or at a new one of the same. What could not be opened leaves isConnected() false.
    void reconnect(const QString& output);

private:
    struct Private;
    explicit TakePlayer(std::unique_ptr<Private> data);

    std::unique_ptr<Private> m_data;
};

}  // namespace vantiro
