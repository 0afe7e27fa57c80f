// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QString>

/// Whether the desktop starts the application when the user logs in: an entry in the autostart folder. These touch
/// small files. Any thread. They read the environment, in which others may change the value of a variable meanwhile,
/// but add none.
namespace vantiro::LoginItem {

enum class State {
    off,
    on,
};

/// What can be started again later: the running executable, or the AppImage that it lies in.
[[nodiscard]] QString program(const QString& executable);

/// The user's entry counts before one of the system's; an entry may be there and say that it is off.
[[nodiscard]] State state();

/// What is turned on starts `program`. An entry of the system's is not removed but overruled.
[[nodiscard]] Result<void> set(State state, const QString& program);

}  // namespace vantiro::LoginItem
