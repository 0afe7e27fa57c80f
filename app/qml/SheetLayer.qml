// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Holds a sheet over the whole window: what lies behind is darker and takes no pointer and no key. Escape leaves. The
/// keyboard begins at the first key and stays within.
FocusScope {
    id: layer

    property alias title: sheet.title
    property alias text: sheet.text
    property alias engraved: sheet.engraved
    default property alias keys: sheet.keys

    signal dismissed

    anchors.fill: parent
    z: 500

    Keys.onEscapePressed: dismissed()
    onVisibleChanged: if (visible) sheet.attend()
    Component.onCompleted: if (visible) sheet.attend()

    Rectangle {
        anchors.fill: parent
        color: Theme.veil
    }

    MouseArea {
        acceptedButtons: Qt.AllButtons
        anchors.fill: parent
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }

    Sheet {
        id: sheet

        title: ""
        width: Math.min(implicitWidth, layer.width - 2 * Theme.margin)
        x: Math.round((layer.width - width) / 2)
        y: Math.round((layer.height - height) * 0.42)
    }
}
