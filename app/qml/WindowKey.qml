// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A key of the window itself: a glyph on the faceplate, nothing around it.
Pressable {
    id: windowKey

    required property int symbol

    implicitHeight: 28
    implicitWidth: 22

    Symbol {
        anchors.centerIn: parent
        anchors.verticalCenterOffset: Math.round(windowKey.press)
        color: windowKey.hovered || windowKey.ringed ? Theme.ink : Theme.dim
        shape: windowKey.symbol
    }

    Ring {
        anchors.margins: 0
        innerRadius: 1
        shown: windowKey.ringed
    }
}
