// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/GraphClock.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vantiro {

namespace {

    constexpr double nanosecondsPerSecond = 1e9;
    /// A lead below this, and below half a cycle, is a wake-up that came late.
    constexpr double leastHiddenLoss = 5e6;
    /// A lead that lasts so long is no late wake-up, nor the start of a burst that makes up for it.
    constexpr std::uint64_t sustained = 500'000'000;
    /// Time constant of the usual lead: quick against the drift of crystals, slow against a loss.
    constexpr double leadTimeConstant = 2e9;
    /// When the quantum changes, a driver may wake up once more after the old one, having counted the new one already.
    constexpr int cyclesUntilSettled = 2;

}  // namespace

double GraphClock::advance(const CycleClock& cycle) noexcept
{
    if (!m_started) {
        m_started = true;
        anchor(cycle);
    } else {
        m_nextTime += admittedLoss(cycle);
    }
    m_nextTime += hiddenLoss(cycle);
    const std::int64_t time = m_nextTime;
    m_nextTime += static_cast<std::int64_t>(cycle.duration);
    m_nextPosition = cycle.position + cycle.duration;
    m_duration = cycle.duration;
    m_framesSinceAnchor += static_cast<std::int64_t>(cycle.duration);
    return static_cast<double>(time);
}

void GraphClock::anchor(const CycleClock& cycle) noexcept
{
    m_clockId = cycle.clockId;
    m_rate = cycle.rate;
    m_anchorNanoseconds = cycle.nanoseconds;
    m_framesSinceAnchor = 0;
    m_usualLead = 0;
    m_lastNanoseconds = cycle.nanoseconds;
    m_excessSince = 0;
}

std::int64_t GraphClock::admittedLoss(const CycleClock& cycle) noexcept
{
    // Another driver's position has nothing to do with the last one's, and with no source nothing can be lost.
    if (cycle.clockId != m_clockId || cycle.rate != m_rate || !cycle.linked) {
        anchor(cycle);
        return 0;
    }
    const auto jump = static_cast<std::int64_t>(cycle.position - m_nextPosition);
    const bool quantumChanged = cycle.duration != m_duration;
    m_unsettledCycles = quantumChanged ? cyclesUntilSettled : std::max(m_unsettledCycles - 1, 0);
    if (jump != 0 || m_unsettledCycles > 0) {
        anchor(cycle);
    }
    if (jump == 0) {
        return 0;
    }
    const auto longest = static_cast<std::int64_t>(std::max(cycle.duration, m_duration));
    if (quantumChanged && std::abs(jump) < longest) {
        return 0;
    }
    if (jump < 0 && cycle.linksChanged) {
        return 0;
    }
    // Never back beyond the beginning: how far a driver went back says nothing, since nothing of ours is lost by it.
    return std::max(jump, -m_nextTime);
}

std::int64_t GraphClock::hiddenLoss(const CycleClock& cycle) noexcept
{
    if (cycle.rate == 0 || !cycle.linked) {
        return 0;
    }
    const double passed = static_cast<double>(static_cast<std::int64_t>(cycle.nanoseconds - m_anchorNanoseconds));
    const double delivered =
        static_cast<double>(m_framesSinceAnchor) * nanosecondsPerSecond / static_cast<double>(cycle.rate);
    const double excess = passed - delivered - m_usualLead;
    const double halfCycle =
        static_cast<double>(cycle.duration) * nanosecondsPerSecond / static_cast<double>(cycle.rate) / 2;
    const double elapsed = static_cast<double>(static_cast<std::int64_t>(cycle.nanoseconds - m_lastNanoseconds));
    m_lastNanoseconds = cycle.nanoseconds;

    if (std::abs(excess) <= std::max(leastHiddenLoss, halfCycle)) {
        m_excessSince = 0;
        m_usualLead += excess * std::clamp(elapsed / leadTimeConstant, 0.0, 1.0);
        return 0;
    }
    if (m_excessSince == 0 || (excess > 0) != (m_leastExcess > 0)) {
        m_excessSince = std::max<std::uint64_t>(cycle.nanoseconds, 1);
        m_leastExcess = excess;
        return 0;
    }
    m_leastExcess = excess > 0 ? std::min(m_leastExcess, excess) : std::max(m_leastExcess, excess);
    if (cycle.nanoseconds - m_excessSince < sustained) {
        return 0;
    }
    m_usualLead += m_leastExcess;
    m_excessSince = 0;
    // More frames than time is a clock that was set anew, never a loss.
    return m_leastExcess > 0 ? std::llround(m_leastExcess * static_cast<double>(cycle.rate) / nanosecondsPerSecond) : 0;
}

}  // namespace vantiro
