// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/CaptureStats.h"

#include "core/foundation/Decibels.h"
#include "core/foundation/Json.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

namespace {

    /// Shows each field to `visit` with its key, in the order of the record. The one list of keys.
    template <class Stats, class Visitor>
    void visitFields(Stats& stats, Visitor&& visit)
    {
        visit("sampleRate"_L1, stats.sampleRate);
        visit("channels"_L1, stats.channels);
        visit("frames"_L1, stats.frames);
        visit("discontinuities"_L1, stats.discontinuities);
        visit("lostFrames"_L1, stats.lostFrames);
        visit("overflowFrames"_L1, stats.overflowFrames);
        visit("audioSpan"_L1, stats.audioSpan);
        visit("hostSpan"_L1, stats.hostSpan);
        visit("peak"_L1, stats.peak);
        visit("deviceLost"_L1, stats.deviceLost);
        visit("sampleRateChanged"_L1, stats.sampleRateChanged);
        visit("writeErrors"_L1, stats.writeErrors);
        visit("fileFrames"_L1, stats.fileFrames);
        visit("clockChecked"_L1, stats.clockChecked);
        visit("steadyTone"_L1, stats.steadyTone);
        visit("droppedCallbacks"_L1, stats.droppedCallbacks);
    }

    QJsonValue jsonValue(double value)
    {
        return json::number(value);
    }

    QJsonValue jsonValue(float value)
    {
        return json::number(value);
    }

    QJsonValue jsonValue(std::int64_t value)
    {
        return static_cast<qint64>(value);
    }

    QJsonValue jsonValue(bool value)
    {
        return value;
    }

    /// Undefined for an absent value, which QJsonObject::insert() takes as no key at all.
    template <class Value>
    QJsonValue jsonValue(const std::optional<Value>& value)
    {
        return value ? jsonValue(*value) : QJsonValue(QJsonValue::Undefined);
    }

}  // namespace

std::optional<std::int64_t> CaptureStats::missingFrames() const
{
    if (!fileFrames) {
        return std::nullopt;
    }
    return std::max<std::int64_t>(frames - *fileFrames, 0);
}

bool CaptureStats::writeFailed() const
{
    return writeErrors.value_or(0) > 0 || missingFrames().value_or(0) > 0 || overflowFrames > 0
        || droppedCallbacks.value_or(0) > 0;
}

double CaptureStats::seconds() const
{
    return sampleRate > 0 ? static_cast<double>(frames) / sampleRate : 0;
}

double CaptureStats::deviationPercent() const
{
    return hostSpan > 0 ? (audioSpan - hostSpan) / hostSpan * 100 : 0;
}

float CaptureStats::peakDB() const
{
    return decibels(peak);
}

QJsonObject CaptureStats::toJson() const
{
    QJsonObject object;
    visitFields(*this, [&object](QLatin1StringView key, const auto& field) { object.insert(key, jsonValue(field)); });
    return object;
}

QByteArray CaptureStats::toJsonText() const
{
    QByteArray text = "{";
    visitFields(*this, [&text](QLatin1StringView key, const auto& field) {
        const QJsonValue value = jsonValue(field);
        if (value.isUndefined()) {
            return;
        }
        // A lone value is no document, so it borrows an array's brackets.
        const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
        text += text.size() > 1 ? ",\"" : "\"";
        text += key.latin1();
        text += "\":" + array.mid(1, array.size() - 2);
    });
    return text + '}';
}

Result<CaptureStats> CaptureStats::fromJson(const QJsonObject& object)
{
    CaptureStats stats;
    json::Reader reader(object);
    visitFields(stats, [&reader](QLatin1StringView key, auto& field) { reader.read(key, field); });
    return reader.finish(stats);
}

}  // namespace vantiro
