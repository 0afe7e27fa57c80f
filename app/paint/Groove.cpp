// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/Groove.h"

#include "app/model/MeterLevels.h"

#include <algorithm>
#include <cmath>

namespace vantiro::Groove {

namespace {

    using Seconds = std::chrono::duration<double>;

    constexpr double turn = 2 * std::numbers::pi;
    constexpr double fadingAge = 0.6;
    constexpr double wobbleStep = 1.9;

    /// How far the platter turned since a value was heard that is `place` values older than the newest; nothing for
    /// what came before it was driven.
    std::optional<double> turnsSince(const Source& source, double place)
    {
        const double age = place / valuesPerSecond;
        if (source.pose) {
            return age * DeckMotion::fullSpeed;
        }
        const auto heard = source.motion.driven - std::chrono::duration_cast<DeckMotion::Span>(Seconds(age));
        if (source.motion.trail.empty() || heard < DeckMotion::Span::zero()) {
            return std::nullopt;
        }
        return source.motion.turns - source.motion.turnsAt(heard);
    }

}  // namespace

std::size_t indexOf(const Style& style)
{
    return 2 * static_cast<std::size_t>(style.tone) + (style.isFaded ? 1 : 0);
}

Style styleAt(std::size_t index)
{
    return {.tone = static_cast<LevelScale::Tone>(index / 2), .isFaded = index % 2 == 1};
}

std::size_t styleOf(const Point& point)
{
    return indexOf({.tone = LevelScale::toneOf(point.levelDB), .isFaded = point.age > fadingAge});
}

std::vector<Point> points(const DeckGeometry& geometry, const Source& source, int steps)
{
    std::vector<Point> result;
    const double arm = source.pose.value_or(source.motion.arm);
    if (arm < DeckMotion::restingArm || source.history.empty() || steps < 2) {
        return result;
    }
    const QPointF centre = geometry.centre();
    const QPointF needle = geometry.armTip(arm) - centre;
    const double start = std::atan2(needle.y(), needle.x());
    const double outer = geometry.needleRadius();
    const double inner = geometry.innerGrooveRadius() + geometry.of(0.016);
    result.reserve(static_cast<std::size_t>(steps));
    for (int step = 0; step < steps; ++step) {
        const double age = double(step) / (steps - 1);
        const double place = age * (valueCount - 1);
        const auto older = static_cast<std::size_t>(place);
        const auto turned = turnsSince(source, place);
        if (older >= source.history.size() || !turned) {
            break;
        }
        const double level = double{source.history[source.history.size() - 1 - older]};
        const double loudness = LevelScale::normalised(level);
        const double wobble = std::sin(wobbleStep * step) * geometry.of(0.0062) * loudness * loudness;
        const double radius = outer - age * (outer - inner) + wobble;
        const double angle = start + *turned * turn;
        result.push_back({.at = centre + radius * QPointF(std::cos(angle), std::sin(angle)),
            .levelDB = level,
            .age = age,
            .isHeard = level > double{meterFloorDB}});
    }
    return result;
}

}  // namespace vantiro::Groove
