// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace vantiro {

/// Cuts a stream of frames into periods of a fixed length, whatever the size of the runs that arrive.
class Framer {
public:
    /// One piece of a run.
    struct Chunk {
        std::int64_t offset = 0;  ///< First frame, counted from the start of the run.
        std::int64_t count = 0;   ///< Frames, at least 1.
        bool closes = false;      ///< Completes the open period.

        bool operator==(const Chunk&) const = default;
    };

    /// `period` in frames, at least 1.
    explicit Framer(std::int64_t period) : m_period(period) { }

    /// The pieces that cover a run of `count` frames, in order.
    [[nodiscard]] std::vector<Chunk> advance(std::int64_t count)
    {
        std::vector<Chunk> chunks;
        for (std::int64_t offset = 0; offset < count;) {
            const std::int64_t taken = std::min(m_period - m_fill, count - offset);
            m_fill += taken;
            const bool closes = m_fill == m_period;
            m_fill = closes ? 0 : m_fill;
            chunks.push_back({.offset = offset, .count = taken, .closes = closes});
            offset += taken;
        }
        return chunks;
    }

    [[nodiscard]] std::int64_t period() const { return m_period; }
    /// Frames in the open period, less than a period.
    [[nodiscard]] std::int64_t fill() const { return m_fill; }

private:
    std::int64_t m_period;
    std::int64_t m_fill = 0;
};

}  // namespace vantiro
