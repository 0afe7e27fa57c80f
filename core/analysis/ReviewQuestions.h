// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/JevQuestion.h"
#include "core/analysis/TakeAnalysis.h"

#include <QList>
#include <QMap>
#include <QString>

/// The questions that are asked about the moments of a take. Their texts are data for the judge: they go out word for
/// word, in no other language. Any thread.
namespace vantiro::ReviewQuestions {

[[nodiscard]] JevQuestion roughness();
[[nodiscard]] JevQuestion plannedBreak();

/// The questions by key, "roughness" and "plannedBreak".
[[nodiscard]] QMap<QString, JevQuestion> all();
/// The kinds of moment that each question is for, by its key, in the order of the kinds.
[[nodiscard]] QMap<QString, QList<TakeAnalysis::Moment::Kind>> applies();

}  // namespace vantiro::ReviewQuestions
