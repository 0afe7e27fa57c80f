// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/Playback.h"
#include "core/playback/PlaybackQueue.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

namespace vantiro {

/// The audio thread's end of a player: hands out what the queue holds, sample by sample as it is, and notes what it
/// handed out. Where nothing is ready, and while it is held, it hands out silence and the place in the file stays.
/// Functions without a mark: any one thread.
class PlaybackFeed final : public PlaybackSource {
public:
    /// The queue outlives the feed. So many frames of silence follow the end of the file before it counts as heard.
    PlaybackFeed(PlaybackQueue& queue, std::size_t framesAfterEnd)
        : m_queue(queue)
        , m_framesAfterEnd(framesAfterEnd) { }

    void fill(std::span<float> samples) noexcept override;

    /// Only stretches of this generation are handed out from now on; it is later than all before.
    void setGeneration(std::uint64_t generation) { m_generation.store(generation, std::memory_order_release); }
    /// Nothing is taken from the queue while it is held, apart from what would be dropped. It begins held.
    void setHeld(bool held) { m_held.store(held, std::memory_order_relaxed); }

    /// The frame behind the last one that was handed out of this generation; nothing if none was.
    [[nodiscard]] std::optional<std::int64_t> position(std::uint64_t generation) const;
    /// All of this generation was handed out, up to the end of the file, and the silence behind it.
    [[nodiscard]] bool hasEnded(std::uint64_t generation) const;
    /// The highest magnitudes on the first and the second channel (of one: twice the same) since the last call.
    [[nodiscard]] std::pair<float, float> takePeaks();
    /// Calls of fill() so far.
    [[nodiscard]] std::uint64_t cycles() const { return m_cycles.load(std::memory_order_relaxed); }

private:
    [[nodiscard]] const PlaybackQueue::Stretch* nextOf(std::uint64_t generation) noexcept;
    [[nodiscard]] std::size_t handOut(const PlaybackQueue::Stretch& stretch, std::span<float> samples) noexcept;
    void noteSilence(std::size_t frames, std::uint64_t generation) noexcept;

    PlaybackQueue& m_queue;
    std::size_t m_framesAfterEnd;

    // Between the threads. The place is stored before its generation, so a place that is read after a generation is of
    // that one or of a later one, and there is no later one than that which the reader itself set last.
    std::atomic<std::uint64_t> m_generation{0};
    std::atomic<bool> m_held{true};
    std::atomic<std::int64_t> m_position{0};
    std::atomic<std::uint64_t> m_positionGeneration{0};
    std::atomic<std::uint64_t> m_endedGeneration{0};
    std::atomic<float> m_first{0};
    std::atomic<float> m_second{0};
    std::atomic<std::uint64_t> m_cycles{0};

    // The audio thread.
    std::size_t m_usedFrames = 0;       ///< Of the queue's oldest stretch.
    std::uint64_t m_endGeneration = 0;  ///< The one whose end was handed out last.
    std::size_t m_silence = 0;          ///< Frames handed out behind that end.
};

}  // namespace vantiro
