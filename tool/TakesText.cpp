// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/TakesText.h"

#include "core/foundation/Json.h"
#include "core/foundation/Numbers.h"
#include "tool/Terminal.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    struct TakesWords {
        Q_DECLARE_TR_FUNCTIONS(TakesText)
    };

    /// Names longer than this push the other columns aside.
    constexpr qsizetype widestName = 40;

    enum class Side {
        left,
        right,
    };

    /// How the columns behind the name are set.
    constexpr std::array sides{Side::right, Side::right, Side::right, Side::right, Side::left, Side::right, Side::left};
    using Row = std::array<QString, sides.size()>;

    /// Day and time in two columns, so that they stand below each other.
    std::array<QString, 2> whenText(const QDateTime& created)
    {
        // The year one stands for a file that no date is known of.
        if (created.date().year() <= 1) {
            return {TakesWords::tr("date not known"), QString()};
        }
        const QDateTime local = created.toLocalTime();
        const QLocale locale = QLocale::c();
        return {locale.toString(local, u"ddd d MMM yyyy"_s), locale.toString(local, u"HH:mm"_s)};
    }

    Row rowOf(const Take& take, const std::optional<QString>& recordingPath)
    {
        const auto [day, time] = whenText(take.created);
        return {day, time, Terminal::clockText(take.seconds), rateText(take.sampleRate), channelsText(take.channels),
            sizeText(take.bytes), take.path == recordingPath ? TakesWords::tr("● recording") : QString()};
    }

    QString lineOf(
        const QString& name, qsizetype nameWidth, const Row& row, const std::array<qsizetype, sides.size()>& widths)
    {
        QString line = name.leftJustified(nameWidth);
        for (std::size_t column = 0; column < row.size(); ++column) {
            line += u"  "_s;
            line += sides[column] == Side::left ? row[column].leftJustified(widths[column])
                                                : row[column].rightJustified(widths[column]);
        }
        while (line.endsWith(u' ')) {
            line.chop(1);
        }
        return line;
    }

    void addTable(QStringList& lines, const TakesView& view)
    {
        std::vector<Row> rows;
        std::array<qsizetype, sides.size()> widths{};
        qsizetype nameWidth = 0;
        for (const Take& take : view.takes) {
            const Row& row = rows.emplace_back(rowOf(take, view.recordingPath));
            for (std::size_t column = 0; column < row.size(); ++column) {
                widths[column] = std::max(widths[column], row[column].size());
            }
            nameWidth = std::max(nameWidth, std::min(take.fileName().size(), widestName));
        }
        for (std::size_t index = 0; index < rows.size(); ++index) {
            lines << lineOf(Terminal::safeName(view.takes[index].fileName()), nameWidth, rows[index], widths);
        }
    }

    QString sumText(const TakesView& view)
    {
        double seconds = 0;
        std::int64_t bytes = 0;
        for (const Take& take : view.takes) {
            seconds += take.seconds;
            bytes += take.bytes;
        }
        const auto count = static_cast<qint64>(view.takes.size());
        return TakesWords::tr("%1 takes, %2 in all, %3, in %4", nullptr, static_cast<int>(count))
            .arg(groupedNumber(count), Terminal::clockText(seconds), sizeText(bytes), Terminal::safeName(view.folder));
    }

    QJsonObject asJson(const Take& take, const std::optional<QString>& recordingPath)
    {
        return {{u"path"_s, take.path}, {u"created"_s, take.created.toUTC().toString(Qt::ISODate)},
            {u"seconds"_s, json::number(take.seconds)}, {u"sampleRate"_s, json::number(take.sampleRate)},
            {u"channels"_s, static_cast<qint64>(take.channels)}, {u"bytes"_s, static_cast<qint64>(take.bytes)},
            {u"isRecording"_s, take.path == recordingPath}};
    }

}  // namespace

QString rateText(double sampleRate)
{
    return TakesWords::tr("%1 Hz").arg(groupedNumber(std::llround(sampleRate)));
}

QString channelsText(std::int64_t channels)
{
    switch (channels) {
    case 1:
        return TakesWords::tr("mono");
    case 2:
        return TakesWords::tr("stereo");
    default:
        return TakesWords::tr("%1 channels").arg(channels);
    }
}

QString sizeText(std::int64_t bytes)
{
    constexpr double step = 1000;
    const std::array units{
        TakesWords::tr("%1 kB"), TakesWords::tr("%1 MB"), TakesWords::tr("%1 GB"), TakesWords::tr("%1 TB")};
    double amount = static_cast<double>(bytes) / step;
    std::size_t unit = 0;
    // What would be rounded to a thousand belongs to the next unit.
    while (unit + 1 < units.size() && amount >= step - 0.05) {
        amount /= step;
        ++unit;
    }
    return units.at(unit).arg(amount, 0, 'f', unit == 0 ? 0 : 1);
}

QStringList takesText(const TakesView& view)
{
    QStringList lines;
    for (const Take& take : view.mended) {
        lines << TakesWords::tr("Mended %1, whose recorder was gone before it could close it: it is %2 long and whole.")
                     .arg(Terminal::safeName(take.fileName()), Terminal::clockText(take.seconds));
    }
    if (!view.mended.empty()) {
        lines << QString();
    }
    if (view.takes.empty()) {
        lines << TakesWords::tr("No takes in %1 yet. 'vantiro record' makes one.").arg(Terminal::safeName(view.folder));
        return lines;
    }
    addTable(lines, view);
    lines << QString() << sumText(view);
    return lines;
}

QByteArray takesJson(const TakesView& view)
{
    QJsonArray takes;
    for (const Take& take : view.takes) {
        takes.append(asJson(take, view.recordingPath));
    }
    QJsonArray mended;
    for (const Take& take : view.mended) {
        mended.append(take.path);
    }
    return QJsonDocument(QJsonObject{{u"folder"_s, view.folder}, {u"takes"_s, takes}, {u"mended"_s, mended}}).toJson();
}

}  // namespace vantiro
