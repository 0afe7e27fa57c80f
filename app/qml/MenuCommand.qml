// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// An entry of the menu with the keys that do the same while the menu is closed.
Shortcut {
    required property string words
    /// A line follows.
    property bool ends

    autoRepeat: false
}
