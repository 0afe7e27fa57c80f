// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/SharedRecords.h"

#include "core/foundation/Files.h"
#include "core/foundation/Json.h"
#include "core/recorder/ProcessLiveness.h"
#include "core/recorder/RecorderLock.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>
#include <limits>

#include <unistd.h>

namespace vantiro::SharedRecords {

namespace {

    using namespace Qt::StringLiterals;

    constexpr std::chrono::seconds lockLimit{5};
    /// Start times are counted in hundredths of a second.
    constexpr double startTolerance = 0.001;
    constexpr auto recordsKey = "records"_L1;
    constexpr auto pidKey = "pid"_L1;
    constexpr auto startKey = "processStart"_L1;

    std::vector<QJsonObject> recordsIn(const QString& path)
    {
        const auto bytes = files::read(path);
        const auto object = bytes ? json::object(*bytes) : std::nullopt;
        std::vector<QJsonObject> records;
        for (const auto& record : object ? object->value(recordsKey).toArray() : QJsonArray()) {
            records.push_back(record.toObject());
        }
        return records;
    }

}  // namespace

Result<void> change(const QString& path, const std::function<void(std::vector<QJsonObject>&)>& edit)
{
    const auto lock = RecorderLock::acquireWithin(path + ".lock"_L1, lockLimit);
    if (!lock) {
        return captureFailure(QStringLiteral("%1 is locked or cannot be written").arg(path));
    }
    std::vector<QJsonObject> records = recordsIn(path);
    const std::vector<QJsonObject> before = records;
    edit(records);
    if (records == before) {
        return {};
    }
    QJsonArray list;
    for (const QJsonObject& record : records) {
        list.append(record);
    }
    return files::replace(path, QJsonDocument(QJsonObject{{recordsKey, list}}).toJson(), files::Durability::lasting);
}

QJsonObject ours(QJsonObject record)
{
    const auto pid = static_cast<std::int32_t>(::getpid());
    record.insert(pidKey, pid);
    if (const auto start = ProcessLiveness::startTime(pid)) {
        record.insert(startKey, *start);
    }
    return record;
}

bool isAbandoned(const QJsonObject& record)
{
    const auto number = json::integer(record.value(pidKey));
    if (!number || *number < 1 || *number > std::numeric_limits<std::int32_t>::max()) {
        return true;
    }
    const auto pid = static_cast<std::int32_t>(*number);
    const QJsonValue told = record.value(startKey);
    if (!told.isDouble()) {
        return !ProcessLiveness::exists(pid);
    }
    const auto start = ProcessLiveness::startTime(pid);
    return !start || std::abs(*start - told.toDouble()) >= startTolerance;
}

}  // namespace vantiro::SharedRecords
