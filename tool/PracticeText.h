// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/PracticeLog.h"
#include "core/analysis/WeeklyComparison.h"

#include <QByteArray>
#include <QStringList>

namespace vantiro {

/// How many takes came to the log just now, and this week against the last in a small table, or what there is to say if
/// neither holds a take.
[[nodiscard]] QStringList practiceText(const PracticeLog& log, qsizetype added, const WeeklyComparison& weeks);

/// {"analysed": file names, "thisWeek", "lastWeek", "changes": by figure}. Absent figures leave their keys out.
[[nodiscard]] QByteArray practiceJson(const QStringList& analysed, const WeeklyComparison& weeks);

}  // namespace vantiro
