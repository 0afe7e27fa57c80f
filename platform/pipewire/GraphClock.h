// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace vantiro {

/// What the graph says of one cycle.
struct CycleClock {
    std::uint32_t clockId = 0;      ///< The driver whose clock this is.
    std::uint64_t position = 0;     ///< First frame of the cycle on that clock.
    std::uint64_t duration = 0;     ///< Frames in the cycle.
    std::uint64_t nanoseconds = 0;  ///< Start of the cycle on the monotonic clock.
    std::uint32_t rate = 0;         ///< Hz.
    bool linked = true;             ///< A source is connected, so a jump of the clock means lost audio.
    bool linksChanged = false;      ///< A link came or went about now.
};

/// Makes one continuous sample time out of the clocks of a graph, in which drivers, quantum and rate change at any
/// moment: each cycle adds its own frames, and only audio that was really lost makes it jump. Lost is what a driver
/// admits by a jump of its position, and what it hides: time that goes on while the position does not, for longer than
/// a late wake-up explains. Belongs to the audio thread.
class GraphClock {
public:
    /// Sample time of the cycle's first frame; the first cycle starts at 0, and none before it. RT safe.
    double advance(const CycleClock& cycle) noexcept;

private:
    void anchor(const CycleClock& cycle) noexcept;
    std::int64_t admittedLoss(const CycleClock& cycle) noexcept;
    std::int64_t hiddenLoss(const CycleClock& cycle) noexcept;

    bool m_started = false;
    std::uint32_t m_clockId = 0;
    std::uint32_t m_rate = 0;
    std::uint64_t m_duration = 0;
    int m_unsettledCycles = 0;  ///< In which the time may still jump because the quantum changed.
    std::uint64_t m_nextPosition = 0;
    std::int64_t m_nextTime = 0;

    // The monotonic clock against the frames delivered since the anchor.
    std::uint64_t m_anchorNanoseconds = 0;
    std::int64_t m_framesSinceAnchor = 0;
    double m_usualLead = 0;  ///< Nanoseconds by which the time is usually ahead of the frames; follows drift.
    std::uint64_t m_lastNanoseconds = 0;
    std::uint64_t m_excessSince = 0;  ///< When the lead left its usual range; 0 while it is inside.
    double m_leastExcess = 0;
};

}  // namespace vantiro
