// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/KWeighting.h"

#include <cmath>
#include <numbers>

namespace vantiro {

namespace {

    // The analogue prototype behind the coefficients that the standard publishes for 48 kHz.
    constexpr double shelfFrequency = 1681.974450955533;
    constexpr double shelfQ = 0.7071752369554196;
    constexpr double shelfHigh = 1.5848647011308556;
    constexpr double shelfBand = 1.2587209302325617;
    constexpr double passFrequency = 38.13547087602444;
    constexpr double passQ = 0.5003270373238773;

}  // namespace

std::optional<KWeighting> KWeighting::atRate(double sampleRate)
{
    if (!(sampleRate >= lowestRate)) {
        return std::nullopt;
    }
    const double shelf = std::tan(std::numbers::pi * shelfFrequency / sampleRate);
    const double shelfSquare = shelf * shelf;
    const double shelfScale = 1 + shelf / shelfQ + shelfSquare;
    const double pass = std::tan(std::numbers::pi * passFrequency / sampleRate);
    const double passSquare = pass * pass;
    const double passScale = 1 + pass / passQ + passSquare;
    return KWeighting{
        .b0 = (shelfHigh + shelfBand * shelf / shelfQ + shelfSquare) / shelfScale,
        .b1 = 2 * (shelfSquare - shelfHigh) / shelfScale,
        .b2 = (shelfHigh - shelfBand * shelf / shelfQ + shelfSquare) / shelfScale,
        .a1 = 2 * (shelfSquare - 1) / shelfScale,
        .a2 = (1 - shelf / shelfQ + shelfSquare) / shelfScale,
        .passA1 = 2 * (passSquare - 1) / passScale,
        .passA2 = (1 - pass / passQ + passSquare) / passScale,
    };
}

}  // namespace vantiro
