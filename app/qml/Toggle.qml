// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A switch that slides; the lamp shows in the space that its cap leaves. It asks to be switched and shows what `checked`
/// says.
Pressable {
    id: toggle

    property bool checked
    property real place: checked ? 1 : 0

    signal toggled(bool on)

    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: if (toggle.enabled) toggle.triggered()
    implicitHeight: 22
    implicitWidth: 44
    opacity: enabled ? 1 : 0.45
    role: Accessible.CheckBox

    onTriggered: toggled(!checked)

    Behavior on place {
        NumberAnimation {
            duration: Theme.toggle
            easing.type: Easing.InOutQuad
        }
    }

    Surface {
        anchors.fill: parent
        recipe: Surface.ToggleWell
    }

    LitPipe {
        lit: toggle.checked
        visible: level > 0
        width: 9
        x: 7
        y: 9
    }

    Rectangle {
        color: Theme.capLampOut
        height: 4
        radius: 2
        visible: !toggle.checked
        width: 9
        x: 28
        y: 9
    }

    Surface {
        id: cap

        height: 18
        hover: Math.max(toggle.glimmer, toggle.press)
        recipe: Surface.ToggleCap
        width: 22
        x: 2 + Math.round(18 * toggle.place)
        y: 2

        Rectangle {
            color: Theme.gripLight
            height: 8
            width: 1
            x: 12
            y: 5
        }

        Rectangle {
            color: Theme.face
            height: 8
            width: 2
            x: 10
            y: 5
        }
    }

    Ring {
        innerRadius: 11
        shown: toggle.ringed
    }
}
