// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderState.h"

#include "core/foundation/Json.h"
#include "core/recorder/ProcessLiveness.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>
#include <utility>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

namespace {

    /// Two readings of one process agree to the last bit; a process that got its number later differs by a clock tick
    /// at least.
    constexpr double startTimeTolerance = 0.001;

    void readPid(json::Reader& reader, std::int32_t& pid)
    {
        std::int64_t number = 0;
        reader.read("pid"_L1, number);
        if (!std::in_range<std::int32_t>(number)) {
            reader.reject("pid"_L1);
            return;
        }
        pid = static_cast<std::int32_t>(number);
    }

    void readChannels(json::Reader& reader, std::vector<std::int64_t>& channels)
    {
        const QJsonValue list = reader.value("channels"_L1);
        if (!list.isArray()) {
            reader.reject("channels"_L1);
        }
        for (const auto& element : list.toArray()) {
            const auto channel = json::integer(element);
            if (!channel) {
                reader.reject("channels"_L1);
                return;
            }
            channels.push_back(*channel);
        }
    }

    void readFormat(json::Reader& reader, TakeFormat& format)
    {
        QString word;
        reader.read("format"_L1, word);
        if (const auto found = takeFormat(word)) {
            format = *found;
        } else {
            reader.reject("format"_L1);
        }
    }

    void readDate(json::Reader& reader, QDateTime& date)
    {
        QString text;
        reader.read("startedAt"_L1, text);
        const QDateTime found = QDateTime::fromString(text, Qt::ISODate);
        // Without a zone the text would mean another moment to each reader.
        if (!found.isValid() || found.timeSpec() == Qt::LocalTime) {
            reader.reject("startedAt"_L1);
            return;
        }
        date = found.toUTC();
    }

    void readStats(json::Reader& reader, std::optional<CaptureStats>& stats)
    {
        const QJsonValue value = reader.value("stats"_L1);
        if (value.isUndefined() || value.isNull()) {
            return;
        }
        // What is not an object reads as an empty one, which lacks every required key.
        if (const auto found = CaptureStats::fromJson(value.toObject())) {
            stats = *found;
        } else {
            reader.reject("stats"_L1);
        }
    }

}  // namespace

RecorderState RecorderState::started(RecorderState state)
{
    state.processStart = ProcessLiveness::startTime(state.pid);
    state.endedBecause.reset();
    return state;
}

bool RecorderState::isRunning() const
{
    // Numbers 0 and 1 are never the recorder's.
    if (pid < 2 || !ProcessLiveness::exists(pid) || !processStart) {
        return false;
    }
    const auto actual = ProcessLiveness::startTime(pid);
    return actual && std::abs(*actual - *processStart) < startTimeTolerance;
}

QJsonObject RecorderState::toJson() const
{
    QJsonArray channelList;
    for (const std::int64_t channel : channels) {
        channelList.append(static_cast<qint64>(channel));
    }
    QJsonObject object{
        {"pid"_L1, pid},
        {"path"_L1, path},
        {"deviceUID"_L1, deviceUID},
        {"deviceName"_L1, deviceName},
        {"channels"_L1, channelList},
        {"format"_L1, rawValue(format)},
        {"startedAt"_L1, startedAt.toUTC().toString(Qt::ISODate)},
    };
    if (stats) {
        object.insert("stats"_L1, stats->toJson());
    }
    if (processStart) {
        object.insert("processStart"_L1, json::number(*processStart));
    }
    if (endedBecause) {
        object.insert("endedBecause"_L1, *endedBecause);
    }
    return object;
}

QByteArray RecorderState::toJsonText() const
{
    return QJsonDocument(toJson()).toJson(QJsonDocument::Indented);
}

Result<RecorderState> RecorderState::fromJson(const QJsonObject& object)
{
    RecorderState state;
    json::Reader reader(object);
    readPid(reader, state.pid);
    reader.read("path"_L1, state.path);
    reader.read("deviceUID"_L1, state.deviceUID);
    reader.read("deviceName"_L1, state.deviceName);
    readChannels(reader, state.channels);
    readFormat(reader, state.format);
    readDate(reader, state.startedAt);
    readStats(reader, state.stats);
    reader.read("processStart"_L1, state.processStart);
    reader.read("endedBecause"_L1, state.endedBecause);
    return reader.finish(std::move(state));
}

}  // namespace vantiro
