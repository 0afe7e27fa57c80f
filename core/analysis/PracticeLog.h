// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/TakeAnalysis.h"
#include "core/analysis/WeeklyComparison.h"
#include "core/foundation/Result.h"
#include "core/takes/Take.h"

#include <QDateTime>
#include <QLatin1StringView>
#include <QLocale>
#include <QSet>
#include <QString>
#include <QTimeZone>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vantiro {

/// What is remembered of one analysed take. Any thread.
struct PracticeEntry {
    QString take;        ///< The file's name, which identifies the entry.
    QDateTime recorded;  ///< When the take began, in UTC.
    double seconds = 0;
    std::int64_t clips = 0;  ///< Moments of clipping.
    double deadAirSeconds = 0;
    std::optional<double> loudnessLUFS = std::nullopt;
    std::optional<std::int64_t> star = std::nullopt;  ///< The user's rating, 1 to 5.

    bool operator==(const PracticeEntry&) const = default;

    /// The entry of a take, without a rating.
    [[nodiscard]] static PracticeEntry of(const Take& take, const TakeAnalysis& analysis);

    /// 0 for a take without length.
    [[nodiscard]] double clipsPerHour() const;
};

/// Where weeks begin.
struct WeekCalendar {
    QTimeZone zone = QTimeZone::systemTimeZone();
    Qt::DayOfWeek firstDay = QLocale().firstDayOfWeek();
};

/// The record of all analysed takes of a folder, in a file beside them so that it moves with them. A value: any thread,
/// but one owner saves it.
struct PracticeLog {
    static constexpr QLatin1StringView fileName{".vantiro-practice.json"};

    std::vector<PracticeEntry> entries = {};  ///< Oldest first.
    /// The name in the folder under which load() set a file aside that was no log; empty if there was none.
    QString setAsideAs = {};
    /// Why load() could not read the folder's log, or not set it aside.
    std::optional<Error> unread = std::nullopt;

    bool operator==(const PracticeLog&) const = default;

    /// The log's file in a folder.
    [[nodiscard]] static QString url(const QString& folder);
    /// The log of a folder, empty if it has none. A file that is no log is set aside under a free name,
    /// ".vantiro-practice.broken.json" or ".vantiro-practice.broken-2.json" and so on, for the ratings in it are the
    /// user's. One that the system does not let read stays where it is, and the log is empty and `unread`.
    [[nodiscard]] static PracticeLog load(const QString& folder);
    /// Fails with the system's words, and with `unread` as long as that file stands there.
    [[nodiscard]] Result<void> save(const QString& folder) const;

    /// Adds the entry, or replaces the one of the same take; its rating stays unless the new one has its own.
    void record(PracticeEntry entry);
    /// Gives the entries of takes that were renamed their new names; `takes` are all of the folder. An entry whose take
    /// is gone belongs to one without an entry that began at the same time and is as long. Returns how many there were.
    std::size_t followRenames(std::span<const Take> takes);
    /// Rates a take that is in the log, from 1 to 5 whatever is given, or takes its rating away.
    void setStar(std::optional<std::int64_t> star, const QString& take);
    /// Forgets all takes but those with these file names.
    void keep(const QSet<QString>& takes);

    /// The week that a moment lies in. Without a valid zone, the 7 days from that moment on.
    [[nodiscard]] WeekSummary week(const QDateTime& containing, const WeekCalendar& calendar = {}) const;
    [[nodiscard]] WeeklyComparison weekly(const QDateTime& now, const WeekCalendar& calendar = {}) const;
};

}  // namespace vantiro
