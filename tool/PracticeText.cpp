// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/PracticeText.h"

#include "core/foundation/Json.h"
#include "core/foundation/Numbers.h"
#include "tool/Terminal.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <cmath>
#include <functional>
#include <vector>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using Change = WeeklyComparison::Change;

    struct PracticeWords {
        Q_DECLARE_TR_FUNCTIONS(PracticeText)
    };

    /// A figure in its unit.
    using Writer = std::function<QString(double)>;

    QString decimal(double value, int decimals)
    {
        // Adding zero turns a negative zero into a plain one.
        const double power = std::pow(10.0, decimals);
        return QString::number(std::round(value * power) / power + 0.0, 'f', decimals);
    }

    /// How a figure moved, without its two values.
    QString changeText(const std::optional<Change>& change, const Writer& write)
    {
        if (!change) {
            return {};
        }
        if (change->direction == Change::Direction::same) {
            return PracticeWords::tr("same");
        }
        QString step = (change->delta() > 0 ? u"+"_s : u"-"_s) + write(std::abs(change->delta()));
        if (!change->better) {
            return step;
        }
        return *change->better ? PracticeWords::tr("%1, better").arg(step) : PracticeWords::tr("%1, worse").arg(step);
    }

    QString line(const QString& title, const QString& now, const QString& before, const QString& change)
    {
        QString text = u"  %1 %2  %3  %4"_s.arg(title, -12).arg(now, 14).arg(before, 14).arg(change);
        while (text.endsWith(u' ')) {
            text.chop(1);
        }
        return text;
    }

    QString figure(const std::optional<double>& value, const Writer& write)
    {
        return value ? write(*value) : u"-"_s;
    }

    QString dayText(const QDateTime& moment)
    {
        return QLocale::c().toString(moment.toLocalTime(), u"ddd d MMM yyyy"_s);
    }

    QJsonObject asJson(const WeekSummary& week)
    {
        QJsonObject object{{u"start"_s, week.start.toUTC().toString(Qt::ISODate)},
            {u"takes"_s, static_cast<qint64>(week.takes)}, {u"seconds"_s, json::number(week.seconds)},
            {u"clips"_s, static_cast<qint64>(week.clips)}, {u"deadAirSeconds"_s, json::number(week.deadAirSeconds)}};
        const auto insert = [&object](const QString& key, const std::optional<double>& value) {
            if (value) {
                object.insert(key, json::number(*value));
            }
        };
        insert(u"loudnessLUFS"_s, week.loudnessLUFS);
        insert(u"clipsPerHour"_s, week.clipsPerHour());
        insert(u"deadAirPerHour"_s, week.deadAirPerHour());
        insert(u"averageSetMinutes"_s, week.averageSetMinutes());
        return object;
    }

    void insert(QJsonObject& changes, const QString& key, const std::optional<Change>& change)
    {
        if (!change) {
            return;
        }
        QJsonObject object{{u"from"_s, json::number(change->from)}, {u"to"_s, json::number(change->to)},
            {u"direction"_s, rawValue(change->direction)}};
        if (change->better) {
            object.insert(u"better"_s, *change->better);
        }
        changes.insert(key, object);
    }

}  // namespace

QStringList practiceText(const PracticeLog& log, qsizetype added, const WeeklyComparison& weeks)
{
    QStringList lines;
    if (added > 0) {
        lines << PracticeWords::tr("Added %1 takes to the log", nullptr, static_cast<int>(added))
                     .arg(groupedNumber(added))
              << QString();
    }
    const WeekSummary& now = weeks.thisWeek;
    const WeekSummary& before = weeks.lastWeek;
    if (now.takes == 0 && before.takes == 0) {
        lines << (log.entries.empty()
                ? PracticeWords::tr("No sets yet: the log fills with the takes of the folder.")
                : PracticeWords::tr("No sets this week or last. The log holds %1 sets, the last of %2.", nullptr,
                      static_cast<int>(log.entries.size()))
                      .arg(groupedNumber(std::ssize(log.entries)), dayText(log.entries.back().recorded)));
        return lines;
    }
    const Writer count = [](double value) { return groupedNumber(std::llround(value)); };
    const Writer minutes = [](double value) { return PracticeWords::tr("%1 min").arg(decimal(value, 0)); };
    const Writer anHour = [](double value) { return PracticeWords::tr("%1 an hour").arg(decimal(value, 1)); };
    const Writer secondsAnHour = [](double value) { return PracticeWords::tr("%1 s an hour").arg(decimal(value, 0)); };
    const Writer loudness = [](double value) { return PracticeWords::tr("%1 LUFS").arg(decimal(value, 1)); };
    const Writer louder = [](double value) { return PracticeWords::tr("%1 LU").arg(decimal(value, 1)); };
    const auto row = [](const QString& title, const std::optional<double>& to, const std::optional<double>& from,
                         const std::optional<Change>& change, const Writer& write, const Writer& writeStep) {
        return line(title, figure(to, write), figure(from, write), changeText(change, writeStep));
    };
    lines << QStringList{
        line(QString(), PracticeWords::tr("this week"), PracticeWords::tr("last week"), QString()),
        row(PracticeWords::tr("Sets"), static_cast<double>(now.takes), static_cast<double>(before.takes), weeks.takes(),
            count, count),
        row(PracticeWords::tr("Average set"), now.averageSetMinutes(), before.averageSetMinutes(),
            weeks.averageSetMinutes(), minutes, minutes),
        row(PracticeWords::tr("Clips"), now.clipsPerHour(), before.clipsPerHour(), weeks.clipsPerHour(), anHour,
            anHour),
        row(PracticeWords::tr("Dead air"), now.deadAirPerHour(), before.deadAirPerHour(), weeks.deadAirPerHour(),
            secondsAnHour, secondsAnHour),
        row(PracticeWords::tr("Loudness"), now.loudnessLUFS, before.loudnessLUFS, weeks.loudnessLUFS(), loudness,
            louder),
    };
    return lines;
}

QByteArray practiceJson(const QStringList& analysed, const WeeklyComparison& weeks)
{
    QJsonObject changes;
    insert(changes, u"takes"_s, weeks.takes());
    insert(changes, u"averageSetMinutes"_s, weeks.averageSetMinutes());
    insert(changes, u"clipsPerHour"_s, weeks.clipsPerHour());
    insert(changes, u"deadAirPerHour"_s, weeks.deadAirPerHour());
    insert(changes, u"loudnessLUFS"_s, weeks.loudnessLUFS());
    return QJsonDocument(
        QJsonObject{{u"analysed"_s, QJsonArray::fromStringList(analysed)}, {u"thisWeek"_s, asJson(weeks.thisWeek)},
            {u"lastWeek"_s, asJson(weeks.lastWeek)}, {u"changes"_s, changes}})
        .toJson();
}

}  // namespace vantiro
