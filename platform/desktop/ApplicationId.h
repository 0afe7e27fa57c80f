// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vantiro {

/// What the desktop knows the application by: its desktop entry, its icon, its windows.
inline constexpr const char* applicationId = "org.vantiro.Vantiro";

}  // namespace vantiro
