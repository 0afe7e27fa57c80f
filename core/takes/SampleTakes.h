// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QDateTime>
#include <QString>
#include <QTimeZone>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

/// Small made takes with the shape of a DJ set, for showing the program without having recorded one.
namespace vantiro::SampleTakes {

/// What a take is made from. The same plan always gives the same bytes.
struct Plan {
    /// A reading of a calendar and a clock, without a time zone of its own.
    struct Start {
        QDate date;
        QTime time;

        bool operator==(const Start&) const = default;
    };

    Start start;               ///< When the take began.
    std::int64_t seconds = 0;  ///< Its length, 0 or more.
    std::int64_t clips = 0;    ///< How many bursts clip.
    std::uint64_t seed = 0;

    bool operator==(const Plan&) const = default;
};

inline constexpr double rate = 1000;  ///< Hz

/// Three sets of three evenings.
[[nodiscard]] std::array<Plan, 3> standard();

/// Writes each plan as a CAF file (two channels, 16 bits) named after its start in the time zone, with a modification
/// time at its end, and makes the folder. A file of that name is replaced. Returns the files' paths in the plans'
/// order. What was written before a failure stays. Any thread.
[[nodiscard]] Result<std::vector<QString>> write(
    std::span<const Plan> plans, const QString& folder, const QTimeZone& timeZone);

}  // namespace vantiro::SampleTakes
