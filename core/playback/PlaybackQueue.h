// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantiro {

/// A wait-free queue of stretches of a file between one producer thread, which reads, and one consumer thread, which
/// plays. Each stretch tells which reading it belongs to, so that those from before a seek can be told and dropped.
class PlaybackQueue {
public:
    /// Frames that follow one another in the file.
    struct Stretch {
        std::uint64_t generation = 0;  ///< Of the reading; each seek begins another one.
        std::int64_t first = 0;        ///< Its first frame's place in the file.
        std::size_t frames = 0;
        bool isEnd = false;  ///< The file gives nothing more.
    };

    /// All above 0. All pages are written to here, so that none is missing later.
    PlaybackQueue(std::size_t channels, std::size_t framesPerSlot, std::size_t slots)
        : m_channels(channels)
        , m_slotSize(framesPerSlot * channels)
        , m_stretches(slots)
        , m_samples(slots * m_slotSize, 0.0F)
    { }
    ~PlaybackQueue() = default;

    PlaybackQueue(const PlaybackQueue&) = delete;
    PlaybackQueue& operator=(const PlaybackQueue&) = delete;

    [[nodiscard]] std::size_t channels() const noexcept { return m_channels; }
    [[nodiscard]] std::size_t framesPerSlot() const noexcept { return m_slotSize / m_channels; }
    [[nodiscard]] std::size_t slots() const noexcept { return m_stretches.size(); }

    /// Where the next stretch is to be written, interleaved; nothing if the queue is full. Producer only.
    [[nodiscard]] std::span<float> nextSlot() noexcept
    {
        const std::uint64_t written = m_written.load(std::memory_order_relaxed);
        if (written - m_read.load(std::memory_order_acquire) == m_stretches.size()) {
            return {};
        }
        return std::span(m_samples).subspan(slotOf(written) * m_slotSize, m_slotSize);
    }
    /// Hands over what was written to nextSlot(). Producer only.
    void push(const Stretch& stretch) noexcept
    {
        const std::uint64_t written = m_written.load(std::memory_order_relaxed);
        m_stretches[slotOf(written)] = stretch;
        m_written.store(written + 1, std::memory_order_release);
    }
    /// All was played. Producer only.
    [[nodiscard]] bool isEmpty() const noexcept
    {
        return m_read.load(std::memory_order_acquire) == m_written.load(std::memory_order_relaxed);
    }
    /// The oldest stretch in the queue is of another generation, so the consumer will drop it. Producer only.
    [[nodiscard]] bool beginsWithOther(std::uint64_t generation) const noexcept
    {
        const std::uint64_t read = m_read.load(std::memory_order_acquire);
        return read != m_written.load(std::memory_order_relaxed) && m_stretches[slotOf(read)].generation != generation;
    }

    /// The oldest stretch; null if there is none. It stays until pop(). Consumer only. RT safe.
    [[nodiscard]] const Stretch* front() const noexcept
    {
        const std::uint64_t read = m_read.load(std::memory_order_relaxed);
        return read == m_written.load(std::memory_order_acquire) ? nullptr : &m_stretches[slotOf(read)];
    }
    /// Its samples, interleaved. There is one. Consumer only. RT safe.
    [[nodiscard]] std::span<const float> frontSamples() const noexcept
    {
        const std::size_t slot = slotOf(m_read.load(std::memory_order_relaxed));
        return std::span(m_samples).subspan(slot * m_slotSize, m_stretches[slot].frames * m_channels);
    }
    /// Gives the oldest stretch back. There is one. Consumer only. RT safe.
    void pop() noexcept { m_read.store(m_read.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

private:
    static constexpr std::size_t cacheLine = 64;

    [[nodiscard]] std::size_t slotOf(std::uint64_t count) const noexcept
    {
        return static_cast<std::size_t>(count % m_stretches.size());
    }

    std::size_t m_channels;
    std::size_t m_slotSize;  ///< In samples.
    std::vector<Stretch> m_stretches;
    std::vector<float> m_samples;
    // Both count slots since the beginning and never wrap in the life of a machine. m_read <= m_written <=
    // m_read + slots always holds. The slots between them may be read by both sides and written by neither; all others
    // are the producer's. Each side moves only its own counter, with release, after it is done with the slot that it
    // hands over. A line of its own for each keeps one side's stores from slowing the other's.
    alignas(cacheLine) std::atomic<std::uint64_t> m_written{0};
    alignas(cacheLine) std::atomic<std::uint64_t> m_read{0};
};

}  // namespace vantiro
