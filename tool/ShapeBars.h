// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/TakeOverview.h"

#include <vector>

namespace vantiro {

/// One bar of a take's shape.
struct ShapeBar {
    float level = 0;  ///< 0 to 1: the mean of its peaks, so that breaks stay visible; of a clipped one the highest.
    bool isClipped = false;
};

/// The overview in that many bars. All are silent if it is empty.
[[nodiscard]] std::vector<ShapeBar> shapeBars(const TakeOverview& overview, int count);

/// Seconds from one mark of a time axis to the next, so that there are about so many at most. At least a second.
[[nodiscard]] double axisStep(double seconds, int mostMarks);

}  // namespace vantiro
