// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/TrayItem.h"

#include <cstdint>
#include <span>

#include <systemd/sd-bus.h>

/// The menu of an item in the tray, as the hosts of trays read it: a root with one level of entries.
namespace vantiro::TrayMenu {

inline constexpr const char* path = "/MenuBar";
inline constexpr const char* interface = "com.canonical.dbusmenu";

/// What the host may ask; the user data is the TrayItem.
[[nodiscard]] const sd_bus_vtable* table();
/// Tells that the same entries read otherwise now.
void tellWords(sd_bus* bus, std::span<const TrayEntry> before, std::span<const TrayEntry> now);
/// Tells that there are other entries now.
void tellLayout(sd_bus* bus, std::uint32_t revision);

}  // namespace vantiro::TrayMenu
