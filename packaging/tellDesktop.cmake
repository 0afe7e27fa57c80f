# SPDX-License-Identifier: GPL-3.0-or-later
# Renews what desktops remember of the entries and icons below the folder `share`. A package does that by itself.
if("$ENV{DESTDIR}" STREQUAL "")
    find_program(UPDATE_ENTRIES update-desktop-database)
    find_program(UPDATE_ICONS gtk-update-icon-cache)
    if(UPDATE_ENTRIES AND EXISTS "${share}/applications")
        execute_process(COMMAND "${UPDATE_ENTRIES}" -q "${share}/applications")
    endif()
    # Where icons are not remembered in a file, a newer folder is what makes a desktop look again; and once there is such
    # a file, everybody who installs an icon has to renew it.
    if(UPDATE_ICONS AND EXISTS "${share}/icons/hicolor/icon-theme.cache")
        execute_process(COMMAND "${UPDATE_ICONS}" -q -t -f "${share}/icons/hicolor")
    elseif(EXISTS "${share}/icons/hicolor")
        file(TOUCH_NOCREATE "${share}/icons/hicolor")
    endif()
endif()
