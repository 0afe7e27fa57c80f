// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/WeeklyComparison.h"

#include <cmath>

namespace vantiro {

namespace {

    using Change = WeeklyComparison::Change;

    enum class Sense {
        lowerIsBetter,
        neutral,
    };

    Change compare(double from, double to, double threshold, Sense sense)
    {
        if (std::abs(to - from) < threshold) {
            return {from, to, Change::Direction::same};
        }
        const bool rises = to > from;
        return {
            .from = from,
            .to = to,
            .direction = rises ? Change::Direction::up : Change::Direction::down,
            .better = sense == Sense::lowerIsBetter ? std::optional(!rises) : std::nullopt,
        };
    }

    std::optional<Change> compare(std::optional<double> from, std::optional<double> to, double threshold, Sense sense)
    {
        return from && to ? std::optional(compare(*from, *to, threshold, sense)) : std::nullopt;
    }

    std::optional<double> perHour(double amount, double seconds)
    {
        return seconds > 0 ? std::optional(amount / (seconds / 3600)) : std::nullopt;
    }

}  // namespace

std::optional<double> WeekSummary::clipsPerHour() const
{
    return perHour(static_cast<double>(clips), seconds);
}

std::optional<double> WeekSummary::deadAirPerHour() const
{
    return perHour(deadAirSeconds, seconds);
}

std::optional<double> WeekSummary::averageSetMinutes() const
{
    return takes > 0 ? std::optional(seconds / static_cast<double>(takes) / 60) : std::nullopt;
}

std::optional<Change> WeeklyComparison::clipsPerHour() const
{
    return compare(lastWeek.clipsPerHour(), thisWeek.clipsPerHour(), 0.5, Sense::lowerIsBetter);
}

std::optional<Change> WeeklyComparison::deadAirPerHour() const
{
    return compare(lastWeek.deadAirPerHour(), thisWeek.deadAirPerHour(), 1.0, Sense::lowerIsBetter);
}

std::optional<Change> WeeklyComparison::averageSetMinutes() const
{
    return compare(lastWeek.averageSetMinutes(), thisWeek.averageSetMinutes(), 1.0, Sense::neutral);
}

std::optional<Change> WeeklyComparison::loudnessLUFS() const
{
    return compare(lastWeek.loudnessLUFS, thisWeek.loudnessLUFS, 0.5, Sense::neutral);
}

Change WeeklyComparison::takes() const
{
    return compare(static_cast<double>(lastWeek.takes), static_cast<double>(thisWeek.takes), 1.0, Sense::neutral);
}

QString rawValue(Change::Direction direction)
{
    switch (direction) {
    case Change::Direction::up:
        return QStringLiteral("up");
    case Change::Direction::down:
        return QStringLiteral("down");
    case Change::Direction::same:
        return QStringLiteral("same");
    }
    return {};
}

}  // namespace vantiro
