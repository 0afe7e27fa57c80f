// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/playback/PlaybackFeed.h"

#include "core/capture/PeakScan.h"

#include <algorithm>

namespace vantiro {

namespace {

    // RT safe.
    void raise(std::atomic<float>& peak, float value) noexcept
    {
        // Only a reader that takes the peak away comes in between, so this ends at the second attempt.
        float known = peak.load(std::memory_order_relaxed);
        while (value > known && !peak.compare_exchange_weak(known, value, std::memory_order_relaxed)) {
        }
    }

}  // namespace

// RT safe.
void PlaybackFeed::fill(std::span<float> samples) noexcept
{
    m_cycles.store(m_cycles.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    const std::uint64_t generation = m_generation.load(std::memory_order_acquire);
    const bool held = m_held.load(std::memory_order_relaxed);
    std::span<float> rest = samples;
    const PlaybackQueue::Stretch* stretch = nextOf(generation);
    while (!held && stretch != nullptr && rest.size() >= m_queue.channels()) {
        rest = rest.subspan(handOut(*stretch, rest));
        stretch = nextOf(generation);
    }
    std::ranges::fill(rest, 0.0F);
    if (!held) {
        noteSilence(rest.size() / m_queue.channels(), generation);
    }
}

/// The oldest stretch of this generation, null without one; those of earlier ones are dropped. A seek may come at any
/// moment, so that a later one's are there already: these stay for the next call. RT safe.
const PlaybackQueue::Stretch* PlaybackFeed::nextOf(std::uint64_t generation) noexcept
{
    const PlaybackQueue::Stretch* stretch = m_queue.front();
    while (stretch != nullptr && stretch->generation < generation) {
        m_queue.pop();
        m_usedFrames = 0;
        stretch = m_queue.front();
    }
    return stretch != nullptr && stretch->generation == generation ? stretch : nullptr;
}

/// From the queue's oldest stretch; how many samples. RT safe.
std::size_t PlaybackFeed::handOut(const PlaybackQueue::Stretch& stretch, std::span<float> samples) noexcept
{
    const std::size_t channels = m_queue.channels();
    const std::size_t frames = std::min(stretch.frames - m_usedFrames, samples.size() / channels);
    const std::span<const float> source = m_queue.frontSamples().subspan(m_usedFrames * channels, frames * channels);
    std::ranges::copy(source, samples.begin());
    const ChannelPeaks peaks =
        scanPeaks(source.data(), static_cast<std::int64_t>(frames), static_cast<std::int64_t>(channels));
    raise(m_first, peaks.first);
    raise(m_second, channels == 1 ? peaks.first : peaks.second);
    m_usedFrames += frames;
    m_position.store(stretch.first + static_cast<std::int64_t>(m_usedFrames), std::memory_order_relaxed);
    m_positionGeneration.store(stretch.generation, std::memory_order_release);
    if (m_usedFrames == stretch.frames) {
        if (stretch.isEnd) {
            m_endGeneration = stretch.generation;
            m_silence = 0;
        }
        m_queue.pop();
        m_usedFrames = 0;
    }
    return source.size();
}

// RT safe.
void PlaybackFeed::noteSilence(std::size_t frames, std::uint64_t generation) noexcept
{
    if (m_endGeneration != generation) {
        return;
    }
    m_silence = std::min(m_silence + frames, m_framesAfterEnd);
    if (m_silence == m_framesAfterEnd) {
        m_endedGeneration.store(generation, std::memory_order_release);
    }
}

std::optional<std::int64_t> PlaybackFeed::position(std::uint64_t generation) const
{
    if (m_positionGeneration.load(std::memory_order_acquire) != generation) {
        return std::nullopt;
    }
    return m_position.load(std::memory_order_relaxed);
}

bool PlaybackFeed::hasEnded(std::uint64_t generation) const
{
    return m_endedGeneration.load(std::memory_order_acquire) == generation;
}

std::pair<float, float> PlaybackFeed::takePeaks()
{
    return {m_first.exchange(0, std::memory_order_relaxed), m_second.exchange(0, std::memory_order_relaxed)};
}

}  // namespace vantiro
