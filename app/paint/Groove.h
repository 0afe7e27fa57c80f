// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/DeckGeometry.h"
#include "app/paint/DeckMotion.h"
#include "app/paint/LevelScale.h"

#include <QPointF>

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

/// The level history as the groove of the record: a spiral that begins under the needle, so that the record fills as
/// the take goes.
namespace vantiro::Groove {

inline constexpr int valueCount = 300;  ///< Values of history on a full record.
inline constexpr double valuesPerSecond = 30;
/// Points of a full groove, half as many where a point is one pixel. The wobble follows the steps, so their number is
/// one at which a turn holds whole waves: those of neighbouring turns lie in step and never cross.
inline constexpr int plainSteps = 441;
inline constexpr int fineSteps = 900;

/// What the groove is wound from.
struct Source {
    std::span<const float> history;  ///< dB, oldest first; the last 300 are used.
    const DeckMotion& motion;
    std::optional<double> pose;  ///< A still picture's arm: the platter turned evenly all the time.
};

/// One step of the drawing.
struct Point {
    QPointF at;
    double levelDB = 0;
    double age = 0;        ///< 0 for the newest value of a full record, 1 for its oldest.
    bool isHeard = false;  ///< Otherwise the line breaks here.
};

/// Kinds of marks: by the class of level, and whether they are so old that they fade.
inline constexpr std::size_t styleCount = std::size_t{2} * LevelScale::toneCount;
struct Style {
    LevelScale::Tone tone = LevelScale::Tone::quiet;
    bool isFaded = false;
};
[[nodiscard]] std::size_t indexOf(const Style& style);
[[nodiscard]] Style styleAt(std::size_t index);
/// The style of the mark at a point, as an index.
[[nodiscard]] std::size_t styleOf(const Point& point);

/// The points from the needle inwards. None while the arm is parked; what was heard before the needle was set down and
/// the platter began to turn is not on the record.
[[nodiscard]] std::vector<Point> points(const DeckGeometry& geometry, const Source& source, int steps);
}  // namespace vantiro::Groove
