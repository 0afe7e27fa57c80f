// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "tool/SignalWatch.h"

#include <QString>

namespace vantiro {

/// Makes an AAC copy of a take beside it, with title, date, album and cover, and shows what another program, ffprobe,
/// reads there. If that is not installed, a line says so.
[[nodiscard]] Result<void> showCopy(const QString& take, SignalWatch& signals);

}  // namespace vantiro
