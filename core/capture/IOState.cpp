// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/IOState.h"

#include "core/capture/PeakScan.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace vantiro {

namespace {

    constexpr std::int64_t sampleBytes = sizeof(float);
    /// Half the width of the band around zero in which a signal is neither above nor below.
    constexpr float crossingThreshold = 0.001F;
    /// Longer gaps are no periods of a tone.
    constexpr std::int64_t longestGap = 1'000'001;
    constexpr std::int64_t crossingsForTone = 100;
    constexpr double toneSpread = 0.05;

    // Explicit vectors, since compilers leave these loops as they are.
    using Lanes = float __attribute__((vector_size(16)));
    using Mask = std::int32_t __attribute__((vector_size(16)));
    using Halves = std::uint64_t __attribute__((vector_size(16)));
    constexpr std::int64_t laneCount = 4;

    Lanes load(const float* samples) noexcept
    {
        Lanes lanes;
        std::memcpy(&lanes, samples, sizeof lanes);
        return lanes;
    }

    /// Two channels, each in a run of its own, become one run of pairs.
    void interleave(const float* left, const float* right, float* target, std::int64_t count) noexcept
    {
        std::int64_t frame = 0;
        for (; frame + laneCount <= count; frame += laneCount) {
            const Lanes first = load(left + frame);
            const Lanes second = load(right + frame);
            const Lanes low = __builtin_shufflevector(first, second, 0, 4, 1, 5);
            const Lanes high = __builtin_shufflevector(first, second, 2, 6, 3, 7);
            std::memcpy(target + 2 * frame, &low, sizeof low);
            std::memcpy(target + 2 * frame + laneCount, &high, sizeof high);
        }
        for (; frame < count; ++frame) {
            target[2 * frame] = left[frame];
            target[2 * frame + 1] = right[frame];
        }
    }

    /// The first frame from `frame` on where `isWanted` is true of the sample, or `count`. `isWanted` takes a sample or
    /// a vector of them.
    template <class Wanted>
    std::int64_t find(
        const float* samples, std::int64_t stride, std::int64_t frame, std::int64_t count, Wanted isWanted) noexcept
    {
        // Music stays on one side for dozens of frames, so eight are looked at in one step. Each has a bit of its own.
        constexpr Mask firstBits{1, 2, 4, 8};
        constexpr Mask secondBits{16, 32, 64, 128};
        for (; stride == 1 && frame + 2 * laneCount <= count; frame += 2 * laneCount) {
            const Mask found = (isWanted(load(samples + frame)) & firstBits)
                | (isWanted(load(samples + frame + laneCount)) & secondBits);
            const auto halves = reinterpret_cast<Halves>(found);
            if (const std::uint64_t bits = halves[0] | halves[1]; bits != 0) {
                return frame + std::countr_zero(static_cast<std::uint32_t>(bits | bits >> 32U));
            }
        }
        while (frame < count && !isWanted(samples[frame * stride])) {
            ++frame;
        }
        return frame;
    }

    template <class Value>
    Value get(const std::atomic<Value>& value) noexcept
    {
        return value.load(std::memory_order_relaxed);
    }

    /// The audio thread alone writes the counters, so reading and writing back need not be one step.
    template <class Value>
    void add(std::atomic<Value>& value, Value amount) noexcept
    {
        value.store(get(value) + amount, std::memory_order_relaxed);
    }

    /// The audio thread is the only writer beside a reader's exchange with 0, so a lost race shows one block's peak
    /// once more and needs no loop.
    void raise(std::atomic<float>& peak, float magnitude) noexcept
    {
        if (magnitude > get(peak)) {
            peak.store(magnitude, std::memory_order_relaxed);
        }
    }

}  // namespace

IOState::IOState(std::span<const std::int64_t> channels, std::span<const std::int64_t> bufferChannels)
    : m_firstBufferChannels(bufferChannels.empty() ? 0 : bufferChannels.front())
    , m_scratch(channels.size() * static_cast<std::size_t>(chunkFrames))
{
    m_routes.reserve(channels.size());
    for (const std::int64_t channel : channels) {
        std::int64_t rest = channel - 1;
        std::size_t buffer = 0;
        // The last buffer takes whatever is left, so the walk ends inside the list.
        while (buffer + 1 < bufferChannels.size() && rest >= bufferChannels[buffer]) {
            rest -= bufferChannels[buffer];
            ++buffer;
        }
        const std::int64_t stride = bufferChannels.empty() ? 0 : bufferChannels[buffer];
        m_routes.push_back({.buffer = buffer, .stride = stride, .offset = rest});
    }
}

void IOState::process(const AudioBlock& block) noexcept
{
    if (block.buffers.empty() || m_firstBufferChannels < 1 || m_routes.empty() || m_ended) {
        return;
    }
    const std::int64_t offered = blockFrames(block);
    if (offered < 1) {
        return;
    }
    std::int64_t count = 0;
    while (count < offered && !m_ended) {
        const std::int64_t chunk = std::min(offered - count, chunkFrames);
        gather(block, count, chunk);
        count += workOnChunk(samplesOf(block, m_routes.front(), count), chunk);
    }
    if (count == 0) {
        return;
    }
    if (block.sampleTime) {
        checkClock(*block.sampleTime, count);
    }
    if (get(m_firstHostTime) == 0) {
        m_firstHostTime.store(block.hostNanoseconds, std::memory_order_relaxed);
    }
    m_lastHostTime.store(block.hostNanoseconds, std::memory_order_relaxed);
    m_framesBeforeLast.store(get(m_frames), std::memory_order_relaxed);
    add(m_frames, count);
}

std::int64_t IOState::blockFrames(const AudioBlock& block) noexcept
{
    std::int64_t smallest = std::numeric_limits<std::int64_t>::max();
    for (const Route& route : m_routes) {
        if (route.buffer >= block.buffers.size() || block.buffers[route.buffer].samples == nullptr) {
            add(m_droppedCallbacks, std::int64_t{1});
            return 0;
        }
        // A block is as long as its shortest routed channel.
        smallest = std::min(smallest, block.buffers[route.buffer].bytes / (sampleBytes * route.stride));
    }
    return smallest;
}

const float* IOState::samplesOf(const AudioBlock& block, const Route& route, std::int64_t start) noexcept
{
    return block.buffers[route.buffer].samples + route.offset + start * route.stride;
}

void IOState::gather(const AudioBlock& block, std::int64_t start, std::int64_t count) noexcept
{
    const std::size_t width = m_routes.size();
    if (width == 2 && m_routes[0].stride == 1 && m_routes[1].stride == 1) {
        interleave(samplesOf(block, m_routes[0], start), samplesOf(block, m_routes[1], start), m_scratch.data(), count);
        return;
    }
    for (std::size_t channel = 0; channel < width; ++channel) {
        const Route& route = m_routes[channel];
        const float* source = samplesOf(block, route, start);
        float* target = m_scratch.data() + channel;
        for (std::int64_t frame = 0; frame < count; ++frame) {
            *target = *source;
            source += route.stride;
            target += width;
        }
    }
}

std::int64_t IOState::workOnChunk(const float* firstChannel, std::int64_t count) noexcept
{
    const std::int64_t kept = store(count);
    countCrossings(firstChannel, kept);
    measurePeaks(kept);
    return kept;
}

std::int64_t IOState::store(std::int64_t count) noexcept
{
    if (m_sink == nullptr) {
        return count;
    }
    const FrameSink::Offer offer = m_sink->offer(m_scratch.data(), count);
    switch (offer.status) {
    case FrameSink::Offer::Status::accepted:
        return count;
    case FrameSink::Offer::Status::full:
        add(m_writeErrors, std::int64_t{1});
        add(m_overflowFrames, count);
        return count;
    case FrameSink::Offer::Status::ended:
        m_ended = true;
        return offer.taken;
    }
    return count;
}

void IOState::countCrossings(const float* firstChannel, std::int64_t count) noexcept
{
    const std::int64_t stride = m_routes.front().stride;
    const auto isBelow = [](auto sample) { return sample < -crossingThreshold; };
    const auto isAbove = [](auto sample) { return sample > crossingThreshold; };
    std::int64_t crossings = 0;
    std::int64_t gaps = 0;
    std::int64_t squares = 0;
    // The running gap at frame i is `since + i + 1`, so only crossings cost anything.
    std::int64_t since = m_framesSinceCrossing;
    bool counting = since >= 0;
    bool wasNegative = m_wasNegative;
    for (std::int64_t frame = 0;;) {
        if (!wasNegative) {
            frame = find(firstChannel, stride, frame, count, isBelow);
        }
        wasNegative = wasNegative || frame < count;
        frame = find(firstChannel, stride, frame, count, isAbove);
        if (frame == count) {
            break;
        }
        wasNegative = false;
        const std::int64_t gap = since + frame + 1;
        if (counting && gap <= longestGap) {
            ++crossings;
            gaps += gap;
            squares += gap * gap;
        }
        counting = true;
        since = -(frame + 1);
    }
    const std::int64_t running = since + count;
    m_framesSinceCrossing = counting && running <= longestGap ? running : -1;
    m_wasNegative = wasNegative;
    if (crossings > 0) {
        add(m_crossings, crossings);
        add(m_gapSum, gaps);
        add(m_gapSquareSum, squares);
    }
}

void IOState::measurePeaks(std::int64_t count) noexcept
{
    const ChannelPeaks peaks = scanPeaks(m_scratch.data(), count, static_cast<std::int64_t>(m_routes.size()));
    raise(m_topPeak, peaks.all);
    raise(m_blockPeak, peaks.all);
    raise(m_leftPeak, peaks.first);
    if (m_routes.size() >= 2) {
        raise(m_rightPeak, peaks.second);
    }
}

void IOState::checkClock(double sampleTime, std::int64_t count) noexcept
{
    m_clockChecked.store(true, std::memory_order_relaxed);
    const double jump = sampleTime - m_expectedSampleTime;
    if (m_expectedSampleTime >= 0 && std::abs(jump) >= 1.0) {
        add(m_discontinuities, std::int64_t{1});
        add(m_lostFrames, std::max(static_cast<std::int64_t>(jump), std::int64_t{0}));
    }
    m_expectedSampleTime = sampleTime + static_cast<double>(count);
}

std::int64_t IOState::framesBeforeLast() const noexcept
{
    return get(m_framesBeforeLast);
}
std::int64_t IOState::discontinuities() const noexcept
{
    return get(m_discontinuities);
}
std::int64_t IOState::lostFrames() const noexcept
{
    return get(m_lostFrames);
}
std::int64_t IOState::overflowFrames() const noexcept
{
    return get(m_overflowFrames);
}
std::int64_t IOState::writeErrors() const noexcept
{
    return get(m_writeErrors);
}
std::int64_t IOState::droppedCallbacks() const noexcept
{
    return get(m_droppedCallbacks);
}
bool IOState::clockChecked() const noexcept
{
    return get(m_clockChecked);
}

double IOState::hostSpan() const noexcept
{
    const std::uint64_t first = get(m_firstHostTime);
    const std::uint64_t last = get(m_lastHostTime);
    return last > first ? static_cast<double>(last - first) / 1e9 : 0;
}

bool IOState::steadyTone() const noexcept
{
    const std::int64_t crossings = get(m_crossings);
    if (crossings < crossingsForTone) {
        return false;
    }
    const double mean = static_cast<double>(get(m_gapSum)) / static_cast<double>(crossings);
    if (!(mean > 0)) {
        return false;
    }
    const double meanSquare = static_cast<double>(get(m_gapSquareSum)) / static_cast<double>(crossings);
    const double variance = std::max(meanSquare - mean * mean, 0.0);
    return std::sqrt(variance) / mean < toneSpread;
}

}  // namespace vantiro
