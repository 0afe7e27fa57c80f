// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/KeptAnalysis.h"
#include "core/analysis/TakeAnalysis.h"
#include "core/foundation/Result.h"
#include "tool/SignalWatch.h"

#include <QString>

#include <optional>

/// What the commands that read takes have in common.
namespace vantiro::TakeFiles {

/// The folder that a call names, or that of the settings. Fails with a sentence if it is not there.
[[nodiscard]] Result<QString> folder(const std::optional<QString>& named);

using KeptAnalysis::isKept;

/// What there is in a take or in any other file with audio, with a bar of the progress under this title if a person
/// looks. Fails as TakeAnalysis does.
[[nodiscard]] Result<TakeAnalysis::Both> analyseAnew(const QString& path, const QString& title, SignalWatch& signals);

/// The analysis of a take or of any other file with audio, used again where it is kept, else as analyseAnew().
[[nodiscard]] Result<TakeAnalysis> analyse(const QString& path, const QString& title, SignalWatch& signals);

}  // namespace vantiro::TakeFiles
