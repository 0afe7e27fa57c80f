// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace vantiro {

/// Writes one line, without secrets, to standard error, which is the recorder's log when the recorder is detached. Any
/// thread.
void logLine(const QString& line);

}  // namespace vantiro
