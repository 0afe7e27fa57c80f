# SPDX-License-Identifier: GPL-3.0-or-later
# Part of an installation: fills the desktop entry in and installs it, then lets a running desktop know. `entry` is the
# template, `made` what becomes of it.
set(programs "${CMAKE_INSTALL_PREFIX}/bin")
configure_file("${entry}" "${made}" @ONLY)
file(INSTALL "${made}" DESTINATION "${CMAKE_INSTALL_PREFIX}/share/applications")
set(share "${CMAKE_INSTALL_PREFIX}/share")
include("${CMAKE_CURRENT_LIST_DIR}/tellDesktop.cmake")
