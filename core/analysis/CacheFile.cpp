// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/CacheFile.h"

#include "core/foundation/Files.h"

#include <algorithm>
#include <limits>
#include <mutex>

namespace vantiro::CacheFile {

QString path(const Take& take, const QString& folder, const QString& ending)
{
    return folder + u'/' + take.name() + u'-' + QString::number(take.bytes) + ending;
}

void keep(const QString& path, const QByteArray& text)
{
    // A file has one writer at a time, and one take may be loaded by two threads at once.
    static std::mutex writing;
    const std::lock_guard lock(writing);
    [[maybe_unused]] const auto kept = files::replace(path, text, files::Durability::passing);
}

QJsonArray numbers(const std::vector<float>& values)
{
    QJsonArray list;
    for (const float value : values) {
        list.append(json::number(value));
    }
    return list;
}

void readList(json::Reader& reader, QLatin1StringView key, std::vector<float>& target)
{
    readList(reader, key, target, [](const QJsonValue& value) -> std::optional<float> {
        if (!value.isDouble()) {
            return std::nullopt;
        }
        constexpr double largest = std::numeric_limits<float>::max();
        return static_cast<float>(std::clamp(value.toDouble(), -largest, largest));
    });
}

}  // namespace vantiro::CacheFile
