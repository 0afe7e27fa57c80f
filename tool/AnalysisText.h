// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/TakeAnalysis.h"

#include <QString>
#include <QStringList>

namespace vantiro {

/// What happened in a set, for the one who played it: length, loudness, levels, and the places that are worth a second
/// look, few of them one by one, of many the worst.
[[nodiscard]] QStringList analysisText(const QString& fileName, const TakeAnalysis& analysis);

/// "-14.2 LUFS", or why there is no loudness.
[[nodiscard]] QString loudnessText(const TakeAnalysis& analysis);

}  // namespace vantiro
