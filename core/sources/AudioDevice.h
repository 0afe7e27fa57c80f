// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QJsonObject>
#include <QString>

#include <cstdint>

namespace vantiro {

/// One audio device as it stood when it was read.
///
/// `transport` is one of the words "built-in", "usb", "thunderbolt", "bluetooth", "airplay", "continuity", "display",
/// "aggregate", "virtual" and "other"; `inputTerminal` one of "microphone", "line", "digital" and "unknown".
struct AudioDevice {
    QString uid;   ///< Stays the same when the device is plugged in again.
    QString name;  ///< As shown to the user; the UID if it has none.
    QString transport = QStringLiteral("other");
    std::int64_t inputChannels = 0;
    std::int64_t outputChannels = 0;
    double sampleRate = 0;  ///< Nominal rate in Hz; 0 if it could not be read.
    QString inputTerminal = QStringLiteral("unknown");

    bool operator==(const AudioDevice&) const = default;

    [[nodiscard]] bool hasInput() const { return inputChannels > 0; }

    [[nodiscard]] QJsonObject toJson() const;
    /// All seven keys, named as the fields, are required.
    [[nodiscard]] static Result<AudioDevice> fromJson(const QJsonObject& object);
};

}  // namespace vantiro
