// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Json.h"

#include <QJsonDocument>
#include <QJsonValue>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vantiro::json {

namespace {

    template <class Float>
    Float finite(Float value) noexcept
    {
        return std::isfinite(value) ? value : std::numeric_limits<Float>::max();
    }

}  // namespace

double number(double value) noexcept
{
    return finite(value);
}

double number(float value) noexcept
{
    return static_cast<double>(finite(value));
}

std::optional<QJsonObject> object(const QByteArray& text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

std::optional<std::int64_t> integer(const QJsonValue& value)
{
    // toInteger() tells a value that is not a whole number only by giving the fallback back.
    const qint64 found = value.toInteger(0);
    return found == value.toInteger(1) ? std::optional<std::int64_t>(found) : std::nullopt;
}

Reader::Reader(QJsonObject object) : m_object(std::move(object)) { }

void Reader::read(QLatin1StringView key, QString& target)
{
    const QJsonValue found = value(key);
    if (!found.isString()) {
        reject(key);
        return;
    }
    target = found.toString();
}

void Reader::read(QLatin1StringView key, bool& target)
{
    const QJsonValue found = value(key);
    if (!found.isBool()) {
        reject(key);
        return;
    }
    target = found.toBool();
}

void Reader::read(QLatin1StringView key, double& target)
{
    const QJsonValue found = value(key);
    if (!found.isDouble()) {
        reject(key);
        return;
    }
    target = found.toDouble();
}

void Reader::read(QLatin1StringView key, float& target)
{
    double found = static_cast<double>(target);
    read(key, found);
    constexpr double largest = static_cast<double>(std::numeric_limits<float>::max());
    target = static_cast<float>(std::clamp(found, -largest, largest));
}

void Reader::read(QLatin1StringView key, std::int64_t& target)
{
    const auto found = integer(value(key));
    if (!found) {
        reject(key);
        return;
    }
    target = *found;
}

QJsonValue Reader::value(QLatin1StringView key) const
{
    return m_object.value(key);
}

void Reader::reject(QLatin1StringView key)
{
    if (m_wrongKey.isNull()) {
        m_wrongKey = key;
    }
}

std::unexpected<Error> Reader::failure() const
{
    return captureFailure(QStringLiteral("the JSON key \"%1\" is missing or not what it should be").arg(m_wrongKey));
}

}  // namespace vantiro::json
