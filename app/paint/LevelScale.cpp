// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/LevelScale.h"

#include "app/model/MeterLevels.h"

#include <algorithm>
#include <cmath>

namespace vantiro::LevelScale {

namespace {

    constexpr double range = -double{meterFloorDB};

}  // namespace

double normalised(double levelDB)
{
    return (std::clamp(levelDB, -range, 0.0) + range) / range;
}

double fraction(double levelDB)
{
    const double value = normalised(levelDB);
    return value * value;
}

double levelAt(double fraction)
{
    return std::sqrt(std::clamp(fraction, 0.0, 1.0)) * range - range;
}

Tone toneOf(double levelDB)
{
    if (levelDB >= -0.5) {
        return Tone::clip;
    }
    if (levelDB >= -3) {
        return Tone::warning;
    }
    return levelDB >= -10 ? Tone::good : Tone::quiet;
}

}  // namespace vantiro::LevelScale
