// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/LevelScale.h"

#include <array>
#include <optional>

/// The two arcs of lamps around the platter as numbers. Angles are in degrees, clockwise from the positive x axis, as y
/// grows downwards. Both arcs climb from the bottom to the top.
namespace vantiro::LedRing {

enum class Side {
    left,
    right,
};

inline constexpr std::array sides{Side::left, Side::right};
inline constexpr int segmentCount = 48;
inline constexpr double arcDegrees = 168;

/// From `start` clockwise over `span`.
struct Arc {
    double start = 0;
    double span = 0;

    [[nodiscard]] double end() const { return start + span; }
    bool operator==(const Arc&) const = default;
};

/// Where segment `index` lies; 0 is the lowest.
[[nodiscard]] Arc segment(Side side, int index);
/// The same for a place on the scale, 0 to 1.
[[nodiscard]] double angleAt(Side side, double fraction);
/// The class of level that segment `index` stands for.
[[nodiscard]] LevelScale::Tone toneOf(int index);
/// The highest segment that a level lights, or the one that a held peak lights: nothing at or below the floor.
[[nodiscard]] std::optional<int> lastLit(double levelDB);

/// What is lit on one side.
struct Lit {
    std::optional<int> last;  ///< All segments up to this one.
    std::optional<int> hold;  ///< This one besides.

    [[nodiscard]] bool contains(int index) const { return (last && index <= *last) || index == hold; }
    bool operator==(const Lit&) const = default;
};
[[nodiscard]] Lit lit(double levelDB, double holdDB);

/// A piece of the bright arc that circles while sources are listened to.
struct SweepPiece {
    Arc arc;
    double opacity = 0;
};
inline constexpr int sweepPieces = 14;
inline constexpr double sweepSeconds = 2.4;  ///< One revolution.
/// The arc `seconds` after it set out, its head first.
[[nodiscard]] std::array<SweepPiece, sweepPieces> sweep(double seconds);

}  // namespace vantiro::LedRing
