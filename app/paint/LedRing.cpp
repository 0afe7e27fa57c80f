// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/LedRing.h"

#include "app/model/MeterLevels.h"

#include <algorithm>
#include <cmath>

namespace vantiro::LedRing {

namespace {

    constexpr double gap = 0.0055;  ///< Between two segments, as a share of the arc.
    constexpr double leftStart = 96;
    constexpr double rightStart = 84;
    constexpr double pieceDegrees = 5;
    constexpr double headOpacity = 0.7;

    double lowerEnd(int index)
    {
        return double(index) / segmentCount;
    }

    double upperEnd(int index)
    {
        return double(index + 1) / segmentCount - gap;
    }

}  // namespace

double angleAt(Side side, double fraction)
{
    const double along = fraction * arcDegrees;
    return side == Side::left ? leftStart + along : rightStart - along;
}

Arc segment(Side side, int index)
{
    const double from = angleAt(side, lowerEnd(index));
    const double to = angleAt(side, upperEnd(index));
    return {.start = std::min(from, to), .span = std::abs(to - from)};
}

LevelScale::Tone toneOf(int index)
{
    return LevelScale::toneOf(LevelScale::levelAt((lowerEnd(index) + upperEnd(index)) / 2));
}

std::optional<int> lastLit(double levelDB)
{
    // A level that is no number lights nothing either.
    if (!(levelDB > double{meterFloorDB})) {
        return std::nullopt;
    }
    return static_cast<int>(segmentCount * LevelScale::fraction(levelDB) - 0.0001);
}

Lit lit(double levelDB, double holdDB)
{
    return {.last = lastLit(levelDB), .hold = lastLit(holdDB)};
}

std::array<SweepPiece, sweepPieces> sweep(double seconds)
{
    const double turns = seconds / sweepSeconds;
    const double head = (turns - std::floor(turns)) * 360;
    std::array<SweepPiece, sweepPieces> pieces;
    for (int i = 0; i < sweepPieces; ++i) {
        pieces.at(static_cast<std::size_t>(i)) = {.arc = {.start = head - (i + 1) * pieceDegrees, .span = pieceDegrees},
            .opacity = headOpacity * (1 - double(i) / sweepPieces)};
    }
    return pieces;
}

}  // namespace vantiro::LedRing
