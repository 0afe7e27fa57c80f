// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace vantiro {

/// A text of a stranger made fit to be shown and written: valid, on one line, without control characters, at most 200
/// characters. Any thread.
[[nodiscard]] QString cleanText(const QString& text);

}  // namespace vantiro
