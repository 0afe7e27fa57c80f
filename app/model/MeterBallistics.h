// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/MeterLevels.h"

#include <chrono>
#include <utility>

namespace vantiro {

/// How a meter moves: bars jump up and fall at 26 dB a second, peak marks stay for a while before they fall, and the
/// clip lamp stays on for some seconds. Advanced 30 times a second.
class MeterBallistics {
public:
    using Moment = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::nanoseconds period{1'000'000'000 / 30};
    static constexpr float fallPerTick = 0.8666667F;  ///< dB
    static constexpr std::chrono::milliseconds holdTime{1'500};
    static constexpr float clipDB = -0.1F;  ///< At or above this the clip lamp lights.
    static constexpr std::chrono::seconds clipTime{3};

    /// What one tick heard.
    struct Tick {
        MeterLevels levels;
        float peakDB = meterFloorDB;  ///< The louder side, not below the floor.
    };

    /// `peaks` are the linear magnitudes since the last tick, left and right.
    Tick advance(std::pair<float, float> peaks, Moment now);
    /// Back to silence.
    void reset();

private:
    struct Side {
        float bar = meterFloorDB;
        float hold = meterFloorDB;
        Moment heldSince = Moment::min();

        void advance(float level, Moment now);
    };

    Side m_left;
    Side m_right;
    Moment m_clipUntil = Moment::min();
};

}  // namespace vantiro
