// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The one scale of everything that shows a level: decibels from -60 to 0 in, places and classes of colour out.
namespace vantiro::LevelScale {

/// Classes of levels, each with a colour of its own.
enum class Tone {
    quiet,
    good,     ///< From -10 dB.
    warning,  ///< From -3 dB.
    clip,     ///< From -0.5 dB.
};
inline constexpr int toneCount = 4;

/// 0 at the floor and below, 1 at 0 dB and above, even steps between.
[[nodiscard]] double normalised(double levelDB);
/// The place on a scale, 0 to 1. The square spreads the hot end, where the eye must tell levels apart.
[[nodiscard]] double fraction(double levelDB);
/// The level at a place on the scale, the inverse of `fraction`; places outside 0 to 1 count as the nearer end.
[[nodiscard]] double levelAt(double fraction);

[[nodiscard]] Tone toneOf(double levelDB);

}  // namespace vantiro::LevelScale
