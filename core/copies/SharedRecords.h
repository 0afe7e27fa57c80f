// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QJsonObject>
#include <QString>

#include <functional>
#include <vector>

/// A small file with a list of JSON records, each of them of one process, that several processes change. A list that is
/// missing or cannot be decoded is empty. Any thread.
namespace vantiro::SharedRecords {

/// Reads the list, hands it to `edit`, and writes what that leaves, lasting, if it is another. A lock file beside the
/// list keeps other processes and threads away meanwhile. Waits for it for a few seconds.
[[nodiscard]] Result<void> change(const QString& path, const std::function<void(std::vector<QJsonObject>&)>& edit);

/// The record with `pid` and `processStart` (seconds since boot) of this process.
[[nodiscard]] QJsonObject ours(QJsonObject record);

/// The process whose record this is has gone, or was never told.
[[nodiscard]] bool isAbandoned(const QJsonObject& record);

}  // namespace vantiro::SharedRecords
