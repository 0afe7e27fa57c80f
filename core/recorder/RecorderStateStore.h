// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Files.h"
#include "core/recorder/RecorderState.h"

#include <QString>

#include <optional>

/// The files that tell of the running take and of the last one. Any thread.
namespace vantiro::RecorderStateStore {

/// The take that is really being recorded now: the state file names a living process of the right start time, and the
/// recorder's lock is held. Takes the lock for a moment if it is free.
[[nodiscard]] std::optional<RecorderState> running();

/// The state in a file; nothing if that cannot be read or decoded.
[[nodiscard]] std::optional<RecorderState> read(const QString& path);

/// Replaces the file, so that a reader sees the old state or the new one, and makes its folder. A take that runs needs
/// no lasting state; the record of one that ended does.
[[nodiscard]] Result<void> write(
    const RecorderState& state, const QString& path, files::Durability durability = files::Durability::passing);

/// Removes the state file, if there is one.
void clear();

}  // namespace vantiro::RecorderStateStore
