// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <optional>

namespace vantiro {

/// What was recorded in a week, summed. Any thread.
struct WeekSummary {
    QDateTime start;  ///< The week's first moment, in UTC.
    std::int64_t takes = 0;
    double seconds = 0;
    std::int64_t clips = 0;  ///< Moments of clipping.
    double deadAirSeconds = 0;
    std::optional<double> loudnessLUFS = std::nullopt;  ///< Plain mean of the takes that have one.

    bool operator==(const WeekSummary&) const = default;

    /// Absent in a week without a second of audio.
    [[nodiscard]] std::optional<double> clipsPerHour() const;
    /// Seconds of silence an hour. Absent in a week without a second of audio.
    [[nodiscard]] std::optional<double> deadAirPerHour() const;
    /// Absent in a week without takes.
    [[nodiscard]] std::optional<double> averageSetMinutes() const;
};

/// This week against the last. Any thread.
struct WeeklyComparison {
    /// How one figure moved from last week to this.
    struct Change {
        enum class Direction {
            up,
            down,
            same,  ///< By less than means anything.
        };

        double from = 0;
        double to = 0;
        Direction direction = Direction::same;
        std::optional<bool> better = std::nullopt;  ///< Absent where no direction is better, or nothing changed.

        bool operator==(const Change&) const = default;

        [[nodiscard]] double delta() const { return to - from; }
    };

    WeekSummary thisWeek;
    WeekSummary lastWeek;

    bool operator==(const WeeklyComparison&) const = default;

    /// Each is absent if either week lacks the figure.
    [[nodiscard]] std::optional<Change> clipsPerHour() const;
    [[nodiscard]] std::optional<Change> deadAirPerHour() const;
    [[nodiscard]] std::optional<Change> averageSetMinutes() const;
    [[nodiscard]] std::optional<Change> loudnessLUFS() const;
    [[nodiscard]] Change takes() const;
};

/// "up", "down" or "same". Any thread.
[[nodiscard]] QString rawValue(WeeklyComparison::Change::Direction direction);

}  // namespace vantiro
