// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The keys at the upper right of a window without a frame.
Row {
    id: keys

    required property Window window
    /// Whether Tab stops here.
    property bool stops: true

    WindowKey {
        hint: qsTr("Minimise")
        name: hint
        stops: keys.stops
        symbol: Symbol.Minimise
        onTriggered: keys.window.showMinimized()
    }

    WindowKey {
        hint: qsTr("Close")
        name: hint
        stops: keys.stops
        symbol: Symbol.Close
        onTriggered: keys.window.close()
    }
}
