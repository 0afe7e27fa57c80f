// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vantiro {

/// A wait-free ring of samples between one producer thread and one consumer thread. Samples go in whole blocks or not
/// at all, and come out in place, without a copy.
class AudioRing {
public:
    /// What the consumer may read, oldest first; the second part is empty unless the ring's end lies between.
    struct Readable {
        std::span<const float> first;
        std::span<const float> second;

        [[nodiscard]] std::size_t size() const noexcept { return first.size() + second.size(); }
    };

    /// `capacity` is in samples and above 0. All its pages are written to here, so that none is missing later.
    explicit AudioRing(std::size_t capacity) : m_samples(capacity, 0.0F) { }
    ~AudioRing() = default;

    AudioRing(const AudioRing&) = delete;
    AudioRing& operator=(const AudioRing&) = delete;

    /// Puts in all the samples, or none if they do not fit; tells which. Producer only. RT safe.
    [[nodiscard]] bool write(std::span<const float> samples) noexcept
    {
        const std::uint64_t written = m_written.load(std::memory_order_relaxed);
        const std::uint64_t read = m_read.load(std::memory_order_acquire);
        if (samples.size() > m_samples.size() - static_cast<std::size_t>(written - read)) {
            return false;
        }
        const auto at = static_cast<std::size_t>(written % m_samples.size());
        const std::size_t first = std::min(samples.size(), m_samples.size() - at);
        std::copy_n(samples.data(), first, m_samples.data() + at);
        std::copy_n(samples.data() + first, samples.size() - first, m_samples.data());
        m_written.store(written + samples.size(), std::memory_order_release);
        return true;
    }

    /// What is there now. It stays as it is until consume(). Consumer only.
    [[nodiscard]] Readable readable() const noexcept
    {
        const std::uint64_t read = m_read.load(std::memory_order_relaxed);
        const auto count = static_cast<std::size_t>(m_written.load(std::memory_order_acquire) - read);
        const auto at = static_cast<std::size_t>(read % m_samples.size());
        const std::size_t first = std::min(count, m_samples.size() - at);
        return {{m_samples.data() + at, first}, {m_samples.data(), count - first}};
    }

    /// Gives back the oldest samples, at most as many as readable() told. Consumer only.
    void consume(std::size_t samples) noexcept
    {
        m_read.store(m_read.load(std::memory_order_relaxed) + samples, std::memory_order_release);
    }

private:
    static constexpr std::size_t cacheLine = 64;

    std::vector<float> m_samples;
    // Both count samples since the beginning and never wrap in the life of a machine. m_read <= m_written <=
    // m_read + capacity always holds. The samples between them belong to the consumer, all others to the producer: each
    // side moves only its own counter, with release, after it is done with the samples that it hands over. A line of
    // its own for each keeps one side's stores from slowing the other's.
    alignas(cacheLine) std::atomic<std::uint64_t> m_written{0};
    alignas(cacheLine) std::atomic<std::uint64_t> m_read{0};
};

}  // namespace vantiro
