// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

/// Starts that a running program stands in for, under X11.
namespace vantiro::X11Startup {

enum class Front {
    wanted,
    left,  ///< To whoever has it.
};

/// Brings that window to the front, if wanted, with the right that the start had, by its startup id, and tells the
/// desktop that the start is over. Without a time in the id the window manager decides whether the window may come.
/// Waits for the X server.
void finish(std::uint32_t window, const QString& startupId, Front front);

/// When the user did what led to the start, in the X server's time; 0 if the id does not say so.
[[nodiscard]] std::uint32_t timeOf(const QString& startupId);

}  // namespace vantiro::X11Startup
