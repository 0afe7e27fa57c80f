// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/recorder/RecorderState.h"

#include <QString>

#include <optional>

/// How a take ended, in words for the user. Any thread.
namespace vantiro::EndingWords {

/// The sentence for a take with this final record; nothing for one that was stopped and is complete. A failed write
/// outranks what ended the take, and that outranks gaps.
[[nodiscard]] std::optional<QString> sentence(const RecorderState& last);

/// The same for the take at this path, of which `last` is the latest final record, if there is one. A take that left no
/// record of its own was cut short with its recorder.
[[nodiscard]] std::optional<QString> sentence(const QString& path, const std::optional<RecorderState>& last);

}  // namespace vantiro::EndingWords
