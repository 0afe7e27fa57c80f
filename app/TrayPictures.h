// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/TrayItem.h"

#include <vector>

namespace vantiro {

/// What the item in the tray shows of the recorder.
enum class TraySymbol {
    record,     ///< A press would record.
    stop,       ///< A take runs.
    attention,  ///< The window has something to say.
};

/// The symbol in the sizes that trays have, on a plate of its own, so that it is seen on a light panel as on a dark
/// one. Any thread.
[[nodiscard]] std::vector<TrayPicture> trayPictures(TraySymbol symbol);

}  // namespace vantiro
