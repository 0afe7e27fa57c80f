// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/IOState.h"

#include "core/capture/PeakScan.h"

#include <algorithm>
#include <cmath>
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

    template <class Value>
    Value get(const std::atomic<Value>& value) noexcept
    {
        return value.load(std::memory_order_relaxed);
    }

    template <class Value>
    void add(std::atomic<Value>& value, Value amount) noexcept
    {
        value.fetch_add(amount, std::memory_order_relaxed);
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
        count += workOnChunk(chunk);
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

void IOState::gather(const AudioBlock& block, std::int64_t start, std::int64_t count) noexcept
{
    const std::size_t width = m_routes.size();
    for (std::size_t channel = 0; channel < width; ++channel) {
        const Route& route = m_routes[channel];
        const float* source = block.buffers[route.buffer].samples + route.offset + start * route.stride;
        float* target = m_scratch.data() + channel;
        for (std::int64_t frame = 0; frame < count; ++frame) {
            *target = *source;
            source += route.stride;
            target += width;
        }
    }
}

std::int64_t IOState::workOnChunk(std::int64_t count) noexcept
{
    const std::int64_t kept = store(count);
    countCrossings(kept);
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

void IOState::countCrossings(std::int64_t count) noexcept
{
    const std::size_t width = m_routes.size();
    const float* sample = m_scratch.data();
    std::int64_t crossings = 0;
    std::int64_t gaps = 0;
    std::int64_t squares = 0;
    // The running gap at frame i is `since + i + 1`, so the loop itself only compares.
    std::int64_t since = m_framesSinceCrossing;
    bool counting = since >= 0;
    bool wasNegative = m_wasNegative;
    for (std::int64_t frame = 0; frame < count; ++frame, sample += width) {
        if (*sample < -crossingThreshold) {
            wasNegative = true;
        } else if (wasNegative && *sample > crossingThreshold) {
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

std::int64_t IOState::framesBeforeLast() const noexcept { return get(m_framesBeforeLast); }
std::int64_t IOState::discontinuities() const noexcept { return get(m_discontinuities); }
std::int64_t IOState::lostFrames() const noexcept { return get(m_lostFrames); }
std::int64_t IOState::overflowFrames() const noexcept { return get(m_overflowFrames); }
std::int64_t IOState::writeErrors() const noexcept { return get(m_writeErrors); }
std::int64_t IOState::droppedCallbacks() const noexcept { return get(m_droppedCallbacks); }
bool IOState::clockChecked() const noexcept { return get(m_clockChecked); }

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
