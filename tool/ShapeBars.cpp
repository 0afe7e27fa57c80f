// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/ShapeBars.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <span>

namespace vantiro {

std::vector<ShapeBar> shapeBars(const TakeOverview& overview, int count)
{
    std::vector<ShapeBar> bars(static_cast<std::size_t>(count));
    const auto slices = std::ssize(overview.peaks);
    for (std::ptrdiff_t bar = 0; bar < count && slices > 0; ++bar) {
        const auto first = bar * slices / count;
        const auto behind = std::max(first + 1, (bar + 1) * slices / count);
        const std::span peaks(overview.peaks.begin() + first, overview.peaks.begin() + behind);
        const auto clip = std::ranges::lower_bound(overview.clips, first);
        const bool isClipped = clip != overview.clips.end() && *clip < behind;
        const float level = isClipped
            ? *std::ranges::max_element(peaks)
            : std::accumulate(peaks.begin(), peaks.end(), 0.0F) / static_cast<float>(peaks.size());
        bars[static_cast<std::size_t>(bar)] = {.level = level, .isClipped = isClipped};
    }
    return bars;
}

double axisStep(double seconds, int mostMarks)
{
    constexpr std::array steps{1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 43200};
    const double least = seconds / std::max(1, mostMarks);
    const auto step = std::ranges::find_if(steps, [least](int candidate) { return candidate >= least; });
    if (step != steps.end()) {
        return *step;
    }
    constexpr double day = 86400;
    return std::ceil(least / day) * day;
}

}  // namespace vantiro
