// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/CacheFile.h"
#include "core/analysis/TakeAnalysis.h"
#include "core/foundation/Files.h"
#include "core/recorder/VantiroPaths.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

namespace {

    using Run = TakeAnalysis::Run;
    using Moment = TakeAnalysis::Moment;

    QJsonObject toJson(const Run& run)
    {
        return {{"start"_L1, json::number(run.start)}, {"duration"_L1, json::number(run.duration)}};
    }

    QJsonObject toJson(const Moment& moment)
    {
        QJsonObject object{
            {"kind"_L1, rawValue(moment.kind)},
            {"start"_L1, json::number(moment.start)},
            {"duration"_L1, json::number(moment.duration)},
            {"levelDuringDB"_L1, json::number(moment.levelDuringDB)},
            {"peakDB"_L1, json::number(moment.peakDB)},
            {"clippedSeconds"_L1, json::number(moment.clippedSeconds)},
        };
        if (moment.levelBeforeDB) {
            object.insert("levelBeforeDB"_L1, json::number(*moment.levelBeforeDB));
        }
        if (moment.levelAfterDB) {
            object.insert("levelAfterDB"_L1, json::number(*moment.levelAfterDB));
        }
        return object;
    }

    template <class Record>
    QJsonArray listOf(const std::vector<Record>& records)
    {
        QJsonArray list;
        for (const Record& record : records) {
            list.append(toJson(record));
        }
        return list;
    }

    template <class Record>
    std::optional<Record> ifWhole(Result<Record> record)
    {
        return record ? std::optional(*std::move(record)) : std::nullopt;
    }

    // What is not an object reads as an empty one, which lacks every required key.
    std::optional<Run> readRun(const QJsonValue& value)
    {
        Run run;
        json::Reader reader(value.toObject());
        reader.read("start"_L1, run.start);
        reader.read("duration"_L1, run.duration);
        return ifWhole(reader.finish(run));
    }

    std::optional<Moment> readMoment(const QJsonValue& value)
    {
        Moment moment;
        json::Reader reader(value.toObject());
        QString kind;
        reader.read("kind"_L1, kind);
        if (const auto found = momentKind(kind)) {
            moment.kind = *found;
        } else {
            reader.reject("kind"_L1);
        }
        reader.read("start"_L1, moment.start);
        reader.read("duration"_L1, moment.duration);
        reader.read("levelBeforeDB"_L1, moment.levelBeforeDB);
        reader.read("levelDuringDB"_L1, moment.levelDuringDB);
        reader.read("levelAfterDB"_L1, moment.levelAfterDB);
        reader.read("peakDB"_L1, moment.peakDB);
        reader.read("clippedSeconds"_L1, moment.clippedSeconds);
        return ifWhole(reader.finish(moment));
    }

}  // namespace

QByteArray TakeAnalysis::toJsonText() const
{
    QJsonObject object{
        {"seconds"_L1, json::number(seconds)},
        {"sampleRate"_L1, json::number(sampleRate)},
        {"channels"_L1, static_cast<qint64>(channels)},
        {"rmsDB"_L1, CacheFile::numbers(rmsDB)},
        {"peakDB"_L1, CacheFile::numbers(peakDB)},
        {"clips"_L1, listOf(clips)},
        {"clippedSamples"_L1, static_cast<qint64>(clippedSamples)},
        {"silences"_L1, listOf(silences)},
        {"moments"_L1, listOf(moments)},
    };
    if (loudness) {
        object.insert("loudness"_L1, json::number(*loudness));
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

Result<TakeAnalysis> TakeAnalysis::fromJsonText(const QByteArray& text)
{
    TakeAnalysis analysis;
    // What is not an object reads as an empty one, which lacks every required key.
    json::Reader reader(json::object(text).value_or(QJsonObject()));
    reader.read("seconds"_L1, analysis.seconds);
    reader.read("sampleRate"_L1, analysis.sampleRate);
    reader.read("channels"_L1, analysis.channels);
    CacheFile::readList(reader, "rmsDB"_L1, analysis.rmsDB);
    CacheFile::readList(reader, "peakDB"_L1, analysis.peakDB);
    CacheFile::readList(reader, "clips"_L1, analysis.clips, readRun);
    reader.read("clippedSamples"_L1, analysis.clippedSamples);
    CacheFile::readList(reader, "silences"_L1, analysis.silences, readRun);
    reader.read("loudness"_L1, analysis.loudness);
    CacheFile::readList(reader, "moments"_L1, analysis.moments, readMoment);
    return reader.finish(std::move(analysis));
}

QString TakeAnalysis::cacheURL(const Take& take, const QString& folder)
{
    return CacheFile::path(take, folder, u"-v%1.json"_s.arg(version));
}

QString TakeAnalysis::cacheFolder()
{
    return VantiroPaths::support() + u"/Analyses"_s;
}

Result<TakeAnalysis> TakeAnalysis::load(const Take& take, const Progress& progress)
{
    const QString file = cacheURL(take, cacheFolder());
    if (const auto text = files::read(file)) {
        if (auto kept = fromJsonText(*text)) {
            return kept;
        }
    }
    auto both = analyze(take.path, {}, TakeOverview::usualSlices, progress);
    if (!both) {
        return std::unexpected(std::move(both).error());
    }
    CacheFile::keep(file, both->analysis.toJsonText());
    const QString overviewFile = TakeOverview::cacheURL(take, TakeOverview::cacheFolder());
    if (!QFileInfo::exists(overviewFile)) {
        CacheFile::keep(overviewFile, both->overview.toJsonText());
    }
    return std::move(both->analysis);
}

}  // namespace vantiro
