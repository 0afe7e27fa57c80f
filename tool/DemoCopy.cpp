// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/DemoCopy.h"

#include "core/copies/TakeCopies.h"
#include "core/takes/Takes.h"
#include "tool/TakesText.h"
#include "tool/Terminal.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <algorithm>
#include <array>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    Result<QString> makeCopy(const QString& path, SignalWatch& signals)
    {
        const auto take = Takes::describe(path);
        if (!take) {
            return captureFailure(u"%1 is no take"_s.arg(path));
        }
        QString copy = QFileInfo(path).path() + u'/' + TakeExporter::suggestedName(path, ExportFormat::aac);
        const auto made = TakeExporter::exportTake({.source = path,
            .destination = copy,
            .format = ExportFormat::aac,
            .tags = TakeCopies::tags(take->created, std::nullopt, QTimeZone::systemTimeZone()),
            .cancelled = [&signals] { return signals.stopRequested(); }});
        return made ? Result<QString>(std::move(copy)) : std::unexpected(made.error().error);
    }

    /// What ffprobe tells of a file, empty if it cannot be started or read the file.
    QJsonObject probe(const QString& path)
    {
        QProcess process;
        process.start(u"ffprobe"_s,
            {u"-v"_s, u"error"_s, u"-show_format"_s, u"-show_streams"_s, u"-of"_s, u"json"_s, u"file:"_s + path});
        process.waitForFinished();
        return QJsonDocument::fromJson(process.readAllStandardOutput()).object();
    }

    QJsonObject streamOfType(const QJsonObject& probed, QLatin1StringView type)
    {
        const QJsonArray streams = probed.value("streams"_L1).toArray();
        const auto found = std::ranges::find_if(
            streams, [type](const QJsonValue& stream) { return stream["codec_type"_L1].toString() == type; });
        return found == streams.end() ? QJsonObject() : QJsonValue(*found).toObject();
    }

    QString audioText(const QJsonObject& stream)
    {
        constexpr double kilo = 1000;
        return u"%1, %2 kbps, %3"_s.arg(stream.value("codec_name"_L1).toString().toUpper())
            .arg(stream.value("bit_rate"_L1).toString().toDouble() / kilo, 0, 'f', 0)
            .arg(rateText(stream.value("sample_rate"_L1).toString().toDouble()));
    }

    QString coverText(const QJsonObject& stream)
    {
        return u"%1, %2 x %3"_s.arg(stream.value("codec_name"_L1).toString().toUpper())
            .arg(stream.value("width"_L1).toInt())
            .arg(stream.value("height"_L1).toInt());
    }

    void printRow(const QString& title, const QString& content)
    {
        Terminal::print(u"  %1 %2"_s.arg(title, -8).arg(content));
    }

}  // namespace

Result<void> showCopy(const QString& take, SignalWatch& signals)
{
    const auto copy = makeCopy(take, signals);
    if (!copy) {
        return std::unexpected(copy.error());
    }
    const QJsonObject probed = probe(*copy);
    if (probed.isEmpty()) {
        Terminal::print(u"\nAn AAC copy with tags and a cover is %1. ffprobe would read them here, but it is not "
                        "installed (package ffmpeg)."_s.arg(*copy));
        return {};
    }
    Terminal::print(u"\nAn AAC copy with tags and a cover. What another program, ffprobe, reads there:"_s);
    printRow(u"Copy"_s, *copy);
    const QJsonObject tags = probed.value("format"_L1)["tags"_L1].toObject();
    constexpr std::array<std::pair<const char*, QLatin1StringView>, 6> rows{
        {{"Title", "title"_L1}, {"Artist", "artist"_L1}, {"Album", "album"_L1}, {"Genre", "genre"_L1},
            {"Date", "date"_L1}, {"Encoder", "encoder"_L1}}};
    for (const auto& [title, key] : rows) {
        if (tags.contains(key)) {
            printRow(QLatin1StringView(title), tags.value(key).toString());
        }
    }
    printRow(u"Audio"_s, audioText(streamOfType(probed, "audio"_L1)));
    if (const QJsonObject cover = streamOfType(probed, "video"_L1); !cover.isEmpty()) {
        printRow(u"Cover"_s, coverText(cover));
    }
    return {};
}

}  // namespace vantiro
