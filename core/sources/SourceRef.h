// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QHashFunctions>
#include <QJsonObject>
#include <QString>

namespace vantiro {

/// The durable name of something that can be recorded: it outlives restarts and reconnections, and the user's choice is
/// remembered by it.
struct SourceRef {
    enum class Kind {
        device,  ///< `id` is the device's UID.
        app,     ///< `id` is the application's identifier.
    };

    Kind kind = Kind::device;
    QString id;

    bool operator==(const SourceRef&) const = default;

    [[nodiscard]] static SourceRef device(QString uid);
    [[nodiscard]] static SourceRef app(QString identifier);

    /// The reference as one text: a device's bare UID, or "app:" and the application's identifier.
    [[nodiscard]] QString descriptor() const;
    /// The inverse of descriptor(); every text is one.
    [[nodiscard]] static SourceRef fromDescriptor(const QString& descriptor);

    /// {"kind": "device" or "app", "id": text}
    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static Result<SourceRef> fromJson(const QJsonObject& object);
};

[[nodiscard]] size_t qHash(const SourceRef& ref, size_t seed = 0) noexcept;

}  // namespace vantiro
