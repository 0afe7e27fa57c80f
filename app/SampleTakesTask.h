// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace vantiro {

/// Writes the standard sample takes into a folder and prints their paths. The program's exit code: 1 if that failed,
/// with a sentence on the terminal.
[[nodiscard]] int writeSampleTakes(const QString& folder);

}  // namespace vantiro
