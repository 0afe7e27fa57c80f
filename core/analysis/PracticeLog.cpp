// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/PracticeLog.h"

#include "core/analysis/CacheFile.h"
#include "core/foundation/Files.h"
#include "core/foundation/Json.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

namespace {

    constexpr int daysOfWeek = 7;
    constexpr qint64 secondsOfWeek = 604'800;
    /// As far from 1970 as dates reach with certainty, in seconds.
    constexpr double farthestDate = 8.64e12;

    QJsonObject toJson(const PracticeEntry& entry)
    {
        QJsonObject object{
            {"take"_L1, entry.take},
            {"recorded"_L1, static_cast<double>(entry.recorded.toMSecsSinceEpoch()) / 1000},
            {"seconds"_L1, json::number(entry.seconds)},
            {"clips"_L1, static_cast<qint64>(entry.clips)},
            {"deadAirSeconds"_L1, json::number(entry.deadAirSeconds)},
        };
        if (entry.loudnessLUFS) {
            object.insert("loudnessLUFS"_L1, json::number(*entry.loudnessLUFS));
        }
        if (entry.star) {
            object.insert("star"_L1, static_cast<qint64>(*entry.star));
        }
        return object;
    }

    std::optional<PracticeEntry> readEntry(const QJsonValue& value)
    {
        PracticeEntry entry;
        // What is not an object reads as an empty one, which lacks every required key.
        json::Reader reader(value.toObject());
        reader.read("take"_L1, entry.take);
        double recorded = 0;
        reader.read("recorded"_L1, recorded);
        if (std::abs(recorded) > farthestDate) {
            reader.reject("recorded"_L1);
        } else {
            entry.recorded = QDateTime::fromMSecsSinceEpoch(std::llround(recorded * 1000), Qt::UTC);
        }
        reader.read("seconds"_L1, entry.seconds);
        reader.read("clips"_L1, entry.clips);
        reader.read("deadAirSeconds"_L1, entry.deadAirSeconds);
        reader.read("loudnessLUFS"_L1, entry.loudnessLUFS);
        reader.read("star"_L1, entry.star);
        auto whole = reader.finish(std::move(entry));
        return whole ? std::optional(*std::move(whole)) : std::nullopt;
    }

    std::optional<std::vector<PracticeEntry>> entriesIn(const QByteArray& bytes)
    {
        const auto object = json::object(bytes);
        if (!object) {
            return std::nullopt;
        }
        std::vector<PracticeEntry> entries;
        json::Reader reader(*object);
        CacheFile::readList(reader, "entries"_L1, entries, readEntry);
        auto whole = reader.finish(std::move(entries));
        return whole ? std::optional(*std::move(whole)) : std::nullopt;
    }

    /// A name for a log that is none, which no other one has.
    QString freeName(const QString& folder)
    {
        const QString stem = QFileInfo(PracticeLog::fileName).completeBaseName() + u".broken"_s;
        QString name = stem + u".json"_s;
        for (int number = 2; QFileInfo::exists(folder + u'/' + name); ++number) {
            name = stem + u"-%1.json"_s.arg(number);
        }
        return name;
    }

    Error failureOf(const QFile& file)
    {
        return CaptureError{file.fileName() + u": "_s + file.errorString()};
    }

    /// The take of this entry under another name.
    bool isTakeOf(const PracticeEntry& entry, const Take& take)
    {
        // With its old name a take may lose the exact time at which it began: what is left is when its file ended,
        // which lacks the time that a source took to start.
        constexpr qint64 apartMilliseconds = 10'000;
        constexpr double apartSeconds = 0.001;
        return std::abs(entry.recorded.msecsTo(take.created)) <= apartMilliseconds
            && std::abs(entry.seconds - take.seconds) <= apartSeconds;
    }

    void sort(std::vector<PracticeEntry>& entries)
    {
        std::ranges::stable_sort(entries, {}, &PracticeEntry::recorded);
    }

    /// The week's first moment and the one after its last; nothing if the calendar knows none.
    std::optional<std::pair<QDateTime, QDateTime>> weekInterval(
        const QDateTime& containing, const WeekCalendar& calendar)
    {
        if (!calendar.zone.isValid() || !containing.isValid()) {
            return std::nullopt;
        }
        const QDate day = containing.toTimeZone(calendar.zone).date();
        const QDate first = day.addDays(-((day.dayOfWeek() - calendar.firstDay + daysOfWeek) % daysOfWeek));
        return std::pair(
            first.startOfDay(calendar.zone).toUTC(), first.addDays(daysOfWeek).startOfDay(calendar.zone).toUTC());
    }

}  // namespace

PracticeEntry PracticeEntry::of(const Take& take, const TakeAnalysis& analysis)
{
    return {
        .take = take.fileName(),
        .recorded = take.created,
        .seconds = analysis.seconds,
        .clips = analysis.clipMoments(),
        .deadAirSeconds = analysis.deadAirSeconds(),
        .loudnessLUFS = analysis.loudness,
    };
}

double PracticeEntry::clipsPerHour() const
{
    return seconds > 0 ? static_cast<double>(clips) / (seconds / 3600) : 0;
}

QString PracticeLog::url(const QString& folder)
{
    return folder + u'/' + fileName;
}

PracticeLog PracticeLog::load(const QString& folder)
{
    PracticeLog log;
    QFile file(url(folder));
    if (!file.exists()) {
        return log;
    }
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (file.error() != QFileDevice::NoError) {
        log.unread = failureOf(file);
        return log;
    }
    if (auto entries = entriesIn(bytes)) {
        log.entries = *std::move(entries);
        sort(log.entries);
        return log;
    }
    file.close();
    const QString name = freeName(folder);
    if (file.rename(folder + u'/' + name)) {
        log.setAsideAs = name;
    } else {
        log.unread = failureOf(file);
    }
    return log;
}

Result<void> PracticeLog::save(const QString& folder) const
{
    if (unread && QFileInfo::exists(url(folder))) {
        return std::unexpected(*unread);
    }
    QJsonArray list;
    for (const PracticeEntry& entry : entries) {
        list.append(toJson(entry));
    }
    const QJsonDocument document(QJsonObject{{"entries"_L1, list}});
    return files::replace(url(folder), document.toJson(QJsonDocument::Indented), files::Durability::lasting);
}

void PracticeLog::record(PracticeEntry entry)
{
    const auto old = std::ranges::find(entries, entry.take, &PracticeEntry::take);
    if (old == entries.end()) {
        entries.push_back(std::move(entry));
    } else {
        if (!entry.star) {
            entry.star = old->star;
        }
        *old = std::move(entry);
    }
    sort(entries);
}

std::size_t PracticeLog::followRenames(std::span<const Take> takes)
{
    std::vector<const Take*> unknown;
    QSet<QString> names;
    for (const Take& take : takes) {
        names.insert(take.fileName());
        if (std::ranges::find(entries, take.fileName(), &PracticeEntry::take) == entries.end()) {
            unknown.push_back(&take);
        }
    }
    std::size_t count = 0;
    for (PracticeEntry& entry : entries) {
        if (names.contains(entry.take)) {
            continue;
        }
        const auto found = std::ranges::find_if(unknown, [&entry](const Take* take) { return isTakeOf(entry, *take); });
        if (found != unknown.end()) {
            entry.take = (*found)->fileName();
            unknown.erase(found);
            ++count;
        }
    }
    return count;
}

void PracticeLog::setStar(std::optional<std::int64_t> star, const QString& take)
{
    const auto entry = std::ranges::find(entries, take, &PracticeEntry::take);
    if (entry != entries.end()) {
        entry->star = star ? std::optional(std::clamp<std::int64_t>(*star, 1, 5)) : std::nullopt;
    }
}

void PracticeLog::keep(const QSet<QString>& takes)
{
    std::erase_if(entries, [&takes](const PracticeEntry& entry) { return !takes.contains(entry.take); });
}

WeekSummary PracticeLog::week(const QDateTime& containing, const WeekCalendar& calendar) const
{
    const auto [start, end] =
        weekInterval(containing, calendar).value_or(std::pair(containing, containing.addSecs(secondsOfWeek)));
    WeekSummary summary{.start = start};
    double loudness = 0;
    std::int64_t loud = 0;
    for (const PracticeEntry& entry : entries) {
        if (entry.recorded < start || entry.recorded >= end) {
            continue;
        }
        ++summary.takes;
        summary.seconds += entry.seconds;
        summary.clips += entry.clips;
        summary.deadAirSeconds += entry.deadAirSeconds;
        if (entry.loudnessLUFS) {
            loudness += *entry.loudnessLUFS;
            ++loud;
        }
    }
    if (loud > 0) {
        summary.loudnessLUFS = loudness / static_cast<double>(loud);
    }
    return summary;
}

WeeklyComparison PracticeLog::weekly(const QDateTime& now, const WeekCalendar& calendar) const
{
    const QDateTime before =
        calendar.zone.isValid() ? now.toTimeZone(calendar.zone).addDays(-daysOfWeek) : now.addSecs(-secondsOfWeek);
    return {.thisWeek = week(now, calendar), .lastWeek = week(before, calendar)};
}

}  // namespace vantiro
