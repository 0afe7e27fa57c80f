// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/TakeAnalysis.h"
#include "core/foundation/Result.h"
#include "core/takes/Take.h"
#include "tool/SignalWatch.h"

#include <QString>

#include <optional>

/// What the commands that read takes have in common.
namespace vantiro::TakeFiles {

/// The folder that a call names, or that of the settings. Fails with a sentence if it is not there.
[[nodiscard]] Result<QString> folder(const std::optional<QString>& named);

/// Both paths lead to one file that is there.
[[nodiscard]] bool isSame(const QString& path, const QString& other);

/// The take at a path, as long as it is finished: what is kept of it stays true. Nothing for a file of another kind,
/// and for the take that is being recorded.
[[nodiscard]] std::optional<Take> finishedTake(const QString& path);

/// The analysis of a take or of any other file with audio, with a bar of its progress under this title if a person
/// looks. Fails as TakeAnalysis does, and with a sentence when a stop was asked for.
[[nodiscard]] Result<TakeAnalysis> analyse(const QString& path, const QString& title, SignalWatch& signals);

}  // namespace vantiro::TakeFiles
