// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/CaptureStats.h"
#include "core/capture/TakeFormat.h"
#include "core/foundation/Result.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace vantiro {

/// One running or finished take, as the recorder tells it to everyone else. Keys of the JSON form are the fields'
/// names.
struct RecorderState {
    std::int32_t pid = 0;  ///< The recorder's process.
    QString path;          ///< The take file, absolute.
    QString deviceUID;     ///< The source's descriptor: a device's UID, or "app:" and the application's identifier.
    QString deviceName;    ///< The source's name as shown to the user.
    std::vector<std::int64_t> channels;  ///< The source's channels that are recorded, counted from 1.
    TakeFormat format = TakeFormat::caf;
    QDateTime startedAt;                                 ///< When the take started. JSON keeps whole seconds, in UTC.
    std::optional<CaptureStats> stats = std::nullopt;    ///< Absent until there are any.
    std::optional<double> processStart = std::nullopt;   ///< When the process started, in seconds since boot.
    std::optional<QString> endedBecause = std::nullopt;  ///< Why the take ended; absent while it runs and after a stop.

    bool operator==(const RecorderState&) const = default;

    /// The state of a take that begins: `state` with `processStart` as the system tells it for `pid` (absent if it does
    /// not) and without `endedBecause`.
    [[nodiscard]] static RecorderState started(RecorderState state);

    /// Whether the very process that wrote the state lives. Looks at no file and no lock. Any thread.
    [[nodiscard]] bool isRunning() const;

    [[nodiscard]] QJsonObject toJson() const;
    /// Indented JSON text with sorted keys.
    [[nodiscard]] QByteArray toJsonText() const;
    /// `stats`, `processStart` and `endedBecause` may be missing, everything else is required; unknown keys are passed
    /// over. The date must name its zone.
    [[nodiscard]] static Result<RecorderState> fromJson(const QJsonObject& object);
};

}  // namespace vantiro
