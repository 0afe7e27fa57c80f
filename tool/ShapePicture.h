// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/TakeOverview.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantiro {

/// A picture of rows from the top, three bytes (red, green, blue) a pixel.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;
};

inline constexpr int leastPictureWidth = 120;
inline constexpr int leastPictureHeight = 40;
inline constexpr int mostPictureSide = 8192;

/// The shape of a take as on the takes page: bars about a middle line in a dark well, clipped places in red, small
/// marks of time along the bottom. Sizes lie between the constants above.
[[nodiscard]] Picture shapePicture(const TakeOverview& overview, double seconds, int width, int height);

}  // namespace vantiro
