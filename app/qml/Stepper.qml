// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A value between a key for the one before and a key for the one after. Tab stops once; the arrows step. It asks for a
/// step and shows what `text` says.
Item {
    id: stepper

    required property string name
    property string text
    property bool canDecrease: true
    property bool canIncrease: true
    property bool ringed: activeFocus
    property alias decreaseKey: less
    property alias increaseKey: more

    signal stepped(int direction)

    Accessible.description: text
    Accessible.focusable: true
    Accessible.name: name
    Accessible.role: Accessible.SpinBox
    Accessible.onDecreaseAction: stepper.step(-1)
    Accessible.onIncreaseAction: stepper.step(1)
    activeFocusOnTab: true
    implicitHeight: 28
    implicitWidth: 118

    Keys.onDownPressed: step(-1)
    Keys.onLeftPressed: step(-1)
    Keys.onRightPressed: step(1)
    Keys.onUpPressed: step(1)

    function step(direction: int) {
        if (enabled && (direction < 0 ? canDecrease : canIncrease))
            stepped(direction);
    }

    Key {
        id: less

        enabled: stepper.canDecrease
        height: 26
        name: qsTr("Previous")
        stops: false
        symbol: Symbol.Minus
        width: 26
        y: 1
        onTriggered: stepper.step(-1)
    }

    Surface {
        height: 28
        recipe: Surface.Well
        width: 60
        x: 29

        TabularText {
            anchors.centerIn: parent
            color: stepper.enabled ? Theme.ink : Theme.fixedWord
            pixelSize: Theme.textSize
            text: stepper.text
            weight: 600
        }
    }

    Key {
        id: more

        enabled: stepper.canIncrease
        height: 26
        name: qsTr("Next")
        stops: false
        symbol: Symbol.Plus
        width: 26
        x: 92
        y: 1
        onTriggered: stepper.step(1)
    }

    Ring {
        shown: stepper.ringed
    }
}
