// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Json.h"
#include "core/takes/Take.h"

#include <QByteArray>
#include <QJsonArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

/// What the files have in common that keep what was found in a take. Any thread.
namespace vantiro::CacheFile {

/// "{stem}-{bytes}{ending}" in the folder: a take that has grown or shrunk misses what was found in it before.
[[nodiscard]] QString path(const Take& take, const QString& folder, const QString& ending);

/// Writes the file and makes its folder. A failure is passed over: the file saves time and holds nothing of its own.
void keep(const QString& path, const QByteArray& text);

[[nodiscard]] QJsonArray numbers(const std::vector<float>& values);

/// Reads a list, each element with `convert`, which returns an optional. Rejects the key if it holds no list, or one
/// with an element that does not convert.
template <class Element, class Convert>
void readList(json::Reader& reader, QLatin1StringView key, std::vector<Element>& target, Convert convert)
{
    const QJsonValue list = reader.value(key);
    if (!list.isArray()) {
        reader.reject(key);
    }
    for (const auto& value : list.toArray()) {
        std::optional<Element> element = convert(QJsonValue(value));
        if (!element) {
            reader.reject(key);
            return;
        }
        target.push_back(*std::move(element));
    }
}

/// Reads a list of numbers.
void readList(json::Reader& reader, QLatin1StringView key, std::vector<float>& target);

}  // namespace vantiro::CacheFile
