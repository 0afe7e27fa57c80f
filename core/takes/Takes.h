// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/Take.h"

#include <QString>

#include <optional>
#include <vector>

/// The takes folder is the library: a file that is not there is not a take, and there is no index.
namespace vantiro::Takes {

/// The takes in a folder itself, newest first; those of one moment in the order of their names. A take is a .caf or
/// .wav file with linear PCM in it; `excluding` is the one under recording, which is none yet, by whatever path. A
/// folder that cannot be read holds none. Reads the header of each file. Any thread.
[[nodiscard]] std::vector<Take> list(const QString& folder, const std::optional<QString>& excluding = std::nullopt);

/// The take at a path, whatever its extension; nothing if there is no file with linear PCM in CAF or WAV. Any thread.
[[nodiscard]] std::optional<Take> describe(const QString& path);

}  // namespace vantiro::Takes
