// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vantiro {

/// The lowest level that a meter shows, in dB, and its value of "nothing".
inline constexpr float meterFloorDB = -60;

/// What a meter shows, in dB.
struct MeterLevels {
    float left = meterFloorDB;
    float right = meterFloorDB;
    float holdLeft = meterFloorDB;  ///< The mark of the latest peak.
    float holdRight = meterFloorDB;
    bool clipped = false;  ///< The clip lamp is on.

    bool operator==(const MeterLevels&) const = default;
};

}  // namespace vantiro
