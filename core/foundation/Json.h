// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QJsonObject>
#include <QLatin1StringView>
#include <QString>

#include <cstdint>
#include <optional>
#include <utility>

namespace vantiro::json {

/// The number as JSON can hold it: one that is not finite becomes the largest of its type, so that a single broken
/// sample never makes a record unreadable. Any thread.
[[nodiscard]] double number(double value) noexcept;
[[nodiscard]] double number(float value) noexcept;

/// The object in a JSON text, or nothing if the text is not one JSON object. Any thread.
[[nodiscard]] std::optional<QJsonObject> object(const QByteArray& text);

/// Takes the fields of a record out of a JSON object and remembers the first one that is wrong. A field that is
/// missing, of another type or out of range leaves its target as it was. Targets that are std::optional may be missing
/// or null. Whole numbers must be whole and fit 64 bits.
class Reader {
public:
    explicit Reader(QJsonObject object);

    void read(QLatin1StringView key, QString& target);
    void read(QLatin1StringView key, bool& target);
    void read(QLatin1StringView key, double& target);
    void read(QLatin1StringView key, float& target);
    void read(QLatin1StringView key, std::int64_t& target);

    template <class Value>
    void read(QLatin1StringView key, std::optional<Value>& target)
    {
        const QJsonValue value = m_object.value(key);
        if (value.isUndefined() || value.isNull()) {
            target.reset();
            return;
        }
        Value found{};
        read(key, found);
        target = std::move(found);
    }

    /// The value under the key, undefined if there is none, for fields with a shape of their own.
    [[nodiscard]] QJsonValue value(QLatin1StringView key) const;
    /// Marks the field as wrong.
    void reject(QLatin1StringView key);

    /// The record that was read, or a CaptureError that names the first key that was wrong.
    template <class Record>
    [[nodiscard]] Result<Record> finish(Record record) const
    {
        if (!m_wrongKey.isNull()) {
            return failure();
        }
        return record;
    }

private:
    [[nodiscard]] std::unexpected<Error> failure() const;

    QJsonObject m_object;
    QString m_wrongKey;
};

/// The whole number in a JSON value, or nothing if it is of another type, has a fraction or does not fit. Any thread.
[[nodiscard]] std::optional<std::int64_t> integer(const QJsonValue& value);

}  // namespace vantiro::json
