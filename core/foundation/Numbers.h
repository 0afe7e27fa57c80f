// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace vantiro {

/// A whole number with commas between groups of three digits, "48,000", whatever the user's locale. Any thread.
[[nodiscard]] QString groupedNumber(qint64 number);

}  // namespace vantiro
