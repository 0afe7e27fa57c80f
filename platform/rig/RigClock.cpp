// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/RigClock.h"

namespace vantiro {

void RigClock::anchor(std::int64_t nsec) noexcept
{
    m_second = nsec;
    m_frames = 0;
}

std::int64_t RigClock::dueNsec() const noexcept
{
    return m_second + m_frames * nsecPerSecond / m_rate;
}

RigClock::Cycle RigClock::advance() noexcept
{
    Cycle cycle{.position = m_position,
        .content = m_content,
        .dueNsec = dueNsec(),
        .nextNsec = 0,
        .frames = m_quantum,
        .rate = m_rate};
    m_position += m_quantum;
    m_content += m_quantum;
    addTime(m_quantum);
    cycle.nextNsec = dueNsec();
    return cycle;
}

std::int64_t RigClock::advanceBorrowed(int frames) noexcept
{
    const std::int64_t first = m_content;
    m_content += frames;
    return first;
}

std::int64_t RigClock::framesDueBy(std::int64_t nsec) const noexcept
{
    const std::int64_t late = nsec - dueNsec();
    if (late <= 0) {
        return 0;
    }
    return late / nsecPerSecond * m_rate + late % nsecPerSecond * m_rate / nsecPerSecond;
}

void RigClock::jump(std::int64_t frames) noexcept
{
    m_position += frames;
    m_content += frames;
}

void RigClock::overrun(std::int64_t frames) noexcept
{
    m_content += frames;
    addTime(frames);
}

void RigClock::setRate(int rate) noexcept
{
    anchor(dueNsec());
    m_rate = rate;
}

// Whole seconds are moved out, so that the product with a billion neither overflows nor loses a fraction.
void RigClock::addTime(std::int64_t frames) noexcept
{
    m_frames += frames;
    m_second += m_frames / m_rate * nsecPerSecond;
    m_frames %= m_rate;
}

}  // namespace vantiro
