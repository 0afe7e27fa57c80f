// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/TakeOverview.h"

#include <QStringList>

namespace vantiro {

/// How clipped places stand out.
enum class ClipMarks {
    colour,  ///< In red, on a terminal.
    row,     ///< By a row of marks above the bars.
};

/// The shape of a take as bars of block characters that many columns wide, with the time below and the clipped places
/// told.
[[nodiscard]] QStringList shapeText(const TakeOverview& overview, double seconds, int columns, ClipMarks marks);

}  // namespace vantiro
