// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/SourcesText.h"

#include "core/foundation/Decibels.h"
#include "core/foundation/Json.h"
#include "core/foundation/Numbers.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// Names longer than this push their reasons aside.
    constexpr qsizetype widestName = 36;
    const QString detailIndent = u"       "_s;

    QString channelText(std::int64_t count)
    {
        return count == 1 ? u"1 channel"_s : u"%1 channels"_s.arg(count);
    }

    /// The level, where the reasons keep silent about it.
    QString quietText(const SourceObservation& observation)
    {
        if (!observation.peakDB || *observation.peakDB >= SourceRanker::heardDB) {
            return {};
        }
        return *observation.peakDB <= silenceDB ? u", silent"_s
                                                : u", quiet, peak %1 dB"_s.arg(Decibels::text(*observation.peakDB));
    }

    QStringList deviceDetails(const SourceObservation& observation, const SourcesView& view)
    {
        const auto device = std::ranges::find(view.found.devices, observation.ref.id, &AudioDevice::uid);
        const double rate = device == view.found.devices.end() ? 0 : device->sampleRate;
        QString facts = u"%1, %2"_s.arg(observation.transport, channelText(observation.channels));
        if (rate > 0) {
            facts += u" at %1 Hz"_s.arg(groupedNumber(static_cast<qint64>(rate)));
        }
        if (observation.inputTerminal != "unknown"_L1) {
            facts += u", %1 terminal"_s.arg(observation.inputTerminal);
        }
        facts += quietText(observation);
        if (view.defaultInputUID == observation.ref.id) {
            facts += u", the system's default"_s;
        }
        return {facts, u"--device "_s + observation.ref.id};
    }

    QStringList programDetails(const AudioProcess& process)
    {
        return {u"program, process %1, %2"_s.arg(process.pid).arg(process.isPlaying ? u"playing"_s : u"quiet"_s),
            u"--app "_s + process.bundleID.value_or(QString::number(process.pid))};
    }

    QStringList details(const SourceObservation& observation, const SourcesView& view)
    {
        if (observation.ref.kind == SourceRef::Kind::device) {
            return deviceDetails(observation, view);
        }
        const auto process = AudioProcesses::withBundleID(view.programs, observation.ref.id);
        return process ? programDetails(*process) : QStringList{u"--app "_s + observation.ref.id};
    }

    bool isRanked(const AudioProcess& process, const FoundSources& found)
    {
        return process.bundleID && std::ranges::any_of(found.sources, [&process](const RankedSource& source) {
            return source.observation.ref.kind == SourceRef::Kind::app
                && source.observation.ref.id.compare(*process.bundleID, Qt::CaseInsensitive) == 0;
        });
    }

    void add(QStringList& lines, const QString& title, const QStringList& details)
    {
        lines << title;
        for (const QString& detail : details) {
            lines << detailIndent + detail;
        }
    }

    void addRanked(QStringList& lines, const SourcesView& view)
    {
        const std::optional<SourceRef> pick = view.found.pick();
        qsizetype width = 0;
        for (const RankedSource& source : view.found.sources) {
            width = std::max(width, std::min(source.observation.name.size(), widestName));
        }
        QString verdict = u"None of these is sure to carry your mix. Name the one that does with --device or --app."_s;
        for (const RankedSource& source : view.found.sources) {
            const SourceObservation& observation = source.observation;
            const bool isPick = pick == observation.ref;
            if (isPick) {
                const QStringList words = QStringList{observation.name} + source.reasons;
                verdict = u"▶ What a take would record: %1."_s.arg(words.join(u", "_s));
            }
            add(lines,
                u"%1 %2  %3  %4"_s.arg(isPick ? u"▶"_s : u" "_s, QString::number(source.score).rightJustified(3),
                    observation.name.leftJustified(width), reasonsText(source)),
                details(observation, view));
        }
        lines << QString() << verdict;
    }

    void addOthers(QStringList& lines, const SourcesView& view)
    {
        bool isFirst = true;
        for (const AudioProcess& process : view.programs) {
            if (isRanked(process, view.found)) {
                continue;
            }
            if (std::exchange(isFirst, false)) {
                lines << QString() << u"Programs that are no known DJ apps:"_s;
            }
            add(lines, u"    "_s + process.name, programDetails(process));
        }
    }

    template <class Range>
    QJsonArray arrayOf(const Range& values)
    {
        QJsonArray array;
        for (const auto& value : values) {
            array.append(value.toJson());
        }
        return array;
    }

    QJsonObject asJson(const RankedSource& source)
    {
        const SourceObservation& observation = source.observation;
        QJsonObject object = observation.ref.toJson();
        object.insert(u"name"_s, observation.name);
        object.insert(u"transport"_s, observation.transport);
        object.insert(u"channels"_s, static_cast<qint64>(observation.channels));
        if (observation.peakDB) {
            object.insert(u"peakDB"_s, json::number(*observation.peakDB));
        }
        object.insert(u"isPlaying"_s, observation.isPlaying);
        object.insert(u"inputTerminal"_s, observation.inputTerminal);
        object.insert(u"steadyTone"_s, observation.steadyTone);
        object.insert(u"isMicrophone"_s, observation.isMicrophone());
        object.insert(u"score"_s, static_cast<qint64>(source.score));
        object.insert(u"reasons"_s, QJsonArray::fromStringList(source.reasons));
        return object;
    }

}  // namespace

SourcesView SourcesView::of(FoundSources found, AudioPlatform& audio)
{
    return {.found = std::move(found), .programs = audio.processes(), .defaultInputUID = audio.defaultInputUID()};
}

QString reasonsText(const RankedSource& source)
{
    return source.reasons.join(u", "_s);
}

QStringList sourcesText(const SourcesView& view)
{
    QStringList lines;
    if (view.found.sources.empty()) {
        lines << u"Nothing to record from. Connect an audio interface, a mixer or a controller, or start a DJ app, and "
                 "ask again."_s;
    } else {
        addRanked(lines, view);
    }
    addOthers(lines, view);
    return lines;
}

QByteArray sourcesJson(const SourcesView& view)
{
    QJsonArray sources;
    for (const RankedSource& source : view.found.sources) {
        sources.append(asJson(source));
    }
    const auto pick = view.found.pick();
    return QJsonDocument(
        QJsonObject{{u"devices"_s, arrayOf(view.found.devices)}, {u"programs"_s, arrayOf(view.programs)},
            {u"sources"_s, sources}, {u"pick"_s, pick ? QJsonValue(pick->descriptor()) : QJsonValue(QJsonValue::Null)}})
        .toJson();
}

}  // namespace vantiro
