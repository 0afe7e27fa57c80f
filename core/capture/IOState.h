// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/FrameSink.h"
#include "core/platform/AudioBlock.h"

#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

namespace vantiro {

/// All that the audio thread touches during a capture: the way from a source's buffers to the wanted channels, and the
/// books. The audio thread alone writes the counters; others read them, each whole but not of one common moment.
class IOState final : public AudioBlockHandler {
public:
    /// Frames worked on at once; longer blocks are cut into such chunks.
    static constexpr std::int64_t chunkFrames = 16384;

    /// `channels` are the wanted channels, counted from 1 over all buffers; `bufferChannels` the channel counts of the
    /// buffers that each block will have. `sink` gets the audio, or nobody; it outlives the last block.
    IOState(std::span<const std::int64_t> channels, std::span<const std::int64_t> bufferChannels);

    void process(const AudioBlock& block) noexcept override;

    /// Only while no block is being processed.
    void setSink(FrameSink* sink) noexcept { m_sink = sink; }

    [[nodiscard]] std::int64_t frames() const noexcept { return m_frames.load(std::memory_order_relaxed); }
    [[nodiscard]] std::int64_t framesBeforeLast() const noexcept;
    [[nodiscard]] std::int64_t discontinuities() const noexcept;
    [[nodiscard]] std::int64_t lostFrames() const noexcept;
    [[nodiscard]] std::int64_t overflowFrames() const noexcept;
    /// Chunks that the sink refused.
    [[nodiscard]] std::int64_t writeErrors() const noexcept;
    [[nodiscard]] std::int64_t droppedCallbacks() const noexcept;
    [[nodiscard]] bool clockChecked() const noexcept;
    [[nodiscard]] float topPeak() const noexcept { return m_topPeak.load(std::memory_order_relaxed); }
    /// Seconds between the arrivals of the first and the last counted block.
    [[nodiscard]] double hostSpan() const noexcept;
    /// At least 100 periods were seen, and the standard deviation of their lengths is below 5 % of their mean: the
    /// control tone of a timecode record, and never music.
    [[nodiscard]] bool steadyTone() const noexcept;

    /// Largest magnitudes since the last call, of all routed channels, of the first and of the second.
    [[nodiscard]] float takeBlockPeak() noexcept { return m_blockPeak.exchange(0, std::memory_order_relaxed); }
    [[nodiscard]] float takeLeftPeak() noexcept { return m_leftPeak.exchange(0, std::memory_order_relaxed); }
    [[nodiscard]] float takeRightPeak() noexcept { return m_rightPeak.exchange(0, std::memory_order_relaxed); }

private:
    /// Where a routed channel lies in a block.
    struct Route {
        std::size_t buffer = 0;
        std::int64_t stride = 0;  ///< Samples from one frame to the next.
        std::int64_t offset = 0;  ///< Index of the channel inside a frame.
    };

    [[nodiscard]] std::int64_t blockFrames(const AudioBlock& block) noexcept;
    /// The route's channel in a block, from frame `start` on.
    [[nodiscard]] static const float* samplesOf(
        const AudioBlock& block, const Route& route, std::int64_t start) noexcept;
    void gather(const AudioBlock& block, std::int64_t start, std::int64_t count) noexcept;
    /// Both return how many of the chunk's frames belong to the capture: all, unless the sink has ended it.
    std::int64_t workOnChunk(const float* firstChannel, std::int64_t count) noexcept;
    std::int64_t store(std::int64_t count) noexcept;
    void countCrossings(const float* firstChannel, std::int64_t count) noexcept;
    void measurePeaks(std::int64_t count) noexcept;
    void checkClock(double sampleTime, std::int64_t count) noexcept;

    std::atomic<std::int64_t> m_frames{0};
    std::atomic<std::int64_t> m_framesBeforeLast{0};
    std::atomic<std::int64_t> m_discontinuities{0};
    std::atomic<std::int64_t> m_lostFrames{0};
    std::atomic<std::int64_t> m_overflowFrames{0};
    std::atomic<std::uint64_t> m_firstHostTime{0};
    std::atomic<std::uint64_t> m_lastHostTime{0};
    std::atomic<float> m_topPeak{0};
    std::atomic<float> m_blockPeak{0};
    std::atomic<float> m_leftPeak{0};
    std::atomic<float> m_rightPeak{0};
    std::atomic<std::int64_t> m_writeErrors{0};
    std::atomic<std::int64_t> m_droppedCallbacks{0};
    std::atomic<bool> m_clockChecked{false};
    std::atomic<std::int64_t> m_crossings{0};
    std::atomic<std::int64_t> m_gapSum{0};
    std::atomic<std::int64_t> m_gapSquareSum{0};

    FrameSink* m_sink = nullptr;
    bool m_ended = false;  ///< The sink has closed the take: nothing that comes later belongs to it.
    std::vector<Route> m_routes;
    std::int64_t m_firstBufferChannels = 0;
    std::vector<float> m_scratch;      ///< One interleaved chunk of the routed channels.
    double m_expectedSampleTime = -1;  ///< Where the next block should begin; negative before the first.
    bool m_wasNegative = false;
    std::int64_t m_framesSinceCrossing = -1;  ///< The running gap; negative while none is counted.
};

}  // namespace vantiro
