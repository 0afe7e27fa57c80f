// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Holds a menu over the whole window: a press anywhere else leaves it, and it has the keyboard as long as it is open.
FocusScope {
    id: layer

    required property Item menu

    signal dismissed

    anchors.fill: parent
    focus: visible
    z: 400

    onVisibleChanged: if (visible) menu.forceActiveFocus(Qt.PopupFocusReason)

    MouseArea {
        acceptedButtons: Qt.AllButtons
        anchors.fill: parent
        hoverEnabled: true
        onPressed: layer.dismissed()
    }
}
