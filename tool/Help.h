// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace vantiro {

/// What the program does, a line a command.
[[nodiscard]] QString generalHelp();
/// How a command is called, and what its options mean.
[[nodiscard]] QString commandHelp(const QString& command);

}  // namespace vantiro
