// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/PendingCopies.h"

#include "core/copies/SharedRecords.h"
#include "core/foundation/Json.h"
#include "core/recorder/VantiroPaths.h"

namespace vantiro::PendingCopies {

namespace {

    using namespace Qt::StringLiterals;

    constexpr auto takeKey = "take"_L1;
    constexpr auto formatKey = "format"_L1;
    constexpr auto toMusicKey = "toMusic"_L1;

    QJsonObject recordOf(const PendingCopy& copy)
    {
        QJsonObject record{{takeKey, copy.take}, {toMusicKey, copy.toMusic}};
        if (copy.format) {
            record.insert(formatKey, rawValue(*copy.format));
        }
        return SharedRecords::ours(record);
    }

    /// Nothing if the record is damaged or there is nothing to do.
    std::optional<PendingCopy> pendingCopyIn(const QJsonObject& record)
    {
        json::Reader reader(record);
        PendingCopy copy;
        std::optional<QString> format;
        reader.read(takeKey, copy.take);
        reader.read(formatKey, format);
        reader.read(toMusicKey, copy.toMusic);
        if (format) {
            copy.format = exportFormat(*format);
        }
        const auto read = reader.finish(copy);
        return read && (copy.format || copy.toMusic) && !copy.take.isEmpty() ? std::optional(*read) : std::nullopt;
    }

    void forget(std::vector<QJsonObject>& records, const QString& take)
    {
        std::erase_if(records, [&](const QJsonObject& record) { return record.value(takeKey).toString() == take; });
    }

}  // namespace

Result<void> add(const PendingCopy& copy)
{
    return SharedRecords::change(VantiroPaths::pendingCopiesFile(), [&](std::vector<QJsonObject>& records) {
        forget(records, copy.take);
        records.push_back(recordOf(copy));
    });
}

Result<void> remove(const QString& take)
{
    return SharedRecords::change(
        VantiroPaths::pendingCopiesFile(), [&](std::vector<QJsonObject>& records) { forget(records, take); });
}

std::vector<PendingCopy> takeUp()
{
    std::vector<PendingCopy> found;
    const auto taken = SharedRecords::change(VantiroPaths::pendingCopiesFile(), [&](std::vector<QJsonObject>& records) {
        std::vector<QJsonObject> kept;
        for (const QJsonObject& record : records) {
            if (!SharedRecords::isAbandoned(record)) {
                kept.push_back(record);
            } else if (const auto copy = pendingCopyIn(record)) {
                found.push_back(*copy);
                kept.push_back(recordOf(*copy));
            }
        }
        records = std::move(kept);
    });
    // Not marked as ours, another process would make them too.
    return taken ? found : std::vector<PendingCopy>();
}

}  // namespace vantiro::PendingCopies
