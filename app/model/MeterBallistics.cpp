// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/MeterBallistics.h"

#include "core/foundation/Decibels.h"

#include <algorithm>

namespace vantiro {

namespace {

    /// What no signal reaches: a broken sample that is infinite must not keep the bars up for ever.
    constexpr float ceilingDB = 60;

    float meterLevel(float magnitude)
    {
        return std::clamp(decibels(magnitude), meterFloorDB, ceilingDB);
    }

}  // namespace

void MeterBallistics::Side::advance(float level, Moment now)
{
    bar = std::max(level, bar - fallPerTick);
    if (hold <= level) {
        hold = level;
        heldSince = now;
    } else if (now > heldSince + holdTime) {
        hold = std::max(hold - fallPerTick, bar);
    }
}

MeterBallistics::Tick MeterBallistics::advance(std::pair<float, float> peaks, Moment now)
{
    const float left = meterLevel(peaks.first);
    const float right = meterLevel(peaks.second);
    m_left.advance(left, now);
    m_right.advance(right, now);
    const float peak = std::max(left, right);
    if (peak >= clipDB) {
        m_clipUntil = now + clipTime;
    }
    return {.levels = {.left = m_left.bar,
                .right = m_right.bar,
                .holdLeft = m_left.hold,
                .holdRight = m_right.hold,
                .clipped = now < m_clipUntil},
        .peakDB = peak};
}

void MeterBallistics::reset()
{
    *this = {};
}

}  // namespace vantiro
