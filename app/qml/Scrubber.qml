// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The place in a take, as a cap on a rail. It asks for another place and shows what `fraction` says.
Item {
    id: scrubber

    property real fraction: 0
    /// How far an arrow key goes; twelve times as far with Shift.
    property real step: 0.01
    property bool hovered: area.containsMouse
    property bool dragged: area.pressed
    /// Where the pointer holds the cap; what is asked for follows it a little more slowly.
    property real held: 0
    readonly property real place: Math.max(0, Math.min(1, area.pressed ? held : fraction))
    property bool ringed: activeFocus
    /// What a screen reader reads, and may write.
    property int value: percent
    readonly property int percent: Math.round(100 * place)
    readonly property int minimumValue: 0
    readonly property int maximumValue: 100
    readonly property int stepSize: 1

    signal seek(real fraction)

    Accessible.description: qsTr("%1 percent").arg(percent)
    Accessible.focusable: true
    Accessible.name: qsTr("Place in the take")
    Accessible.role: Accessible.Slider
    Accessible.onDecreaseAction: scrubber.seekTo(scrubber.fraction - scrubber.step)
    Accessible.onIncreaseAction: scrubber.seekTo(scrubber.fraction + scrubber.step)
    activeFocusOnTab: true
    implicitHeight: 28
    implicitWidth: 300
    opacity: enabled ? 1 : 0.45

    Keys.onLeftPressed: event => seekTo(fraction - step * (event.modifiers & Qt.ShiftModifier ? 12 : 1))
    Keys.onRightPressed: event => seekTo(fraction + step * (event.modifiers & Qt.ShiftModifier ? 12 : 1))
    onValueChanged: if (value !== percent) take(value / 100)

    function seekTo(place: real) {
        if (enabled)
            seek(Math.max(0, Math.min(1, place)));
    }

    /// Another place was written from outside; the value follows the fraction again.
    function take(place: real) {
        value = Qt.binding(() => percent);
        seekTo(place);
    }

    Surface {
        height: 6
        recipe: Surface.Rail
        width: parent.width
        y: 11
    }

    Rectangle {
        color: Theme.lime
        height: 4
        opacity: 0.9
        radius: 2
        width: cap.x + 6
        y: 12
    }

    Surface {
        id: cap

        height: 20
        hover: scrubber.enabled && (scrubber.hovered || scrubber.dragged) ? 1 : 0
        recipe: Surface.RailCap
        width: 12
        x: Math.round(scrubber.place * scrubber.width) - 6
        y: 4

        Rectangle {
            color: Theme.lime
            height: 14
            radius: 1
            width: 2
            x: 5
            y: 3
        }

        FocusRing {
            anchors.fill: parent
            anchors.leftMargin: -9
            anchors.rightMargin: -9
            anchors.topMargin: -7
            anchors.bottomMargin: -7
            radius: 7
            visible: scrubber.ringed
        }
    }

    MouseArea {
        id: area

        anchors.fill: parent
        hoverEnabled: true
        onCanceled: rest.stop()
        onPositionChanged: mouse => {
            scrubber.held = mouse.x / scrubber.width;
            if (pressed && !rest.running)
                rest.start();
        }
        onPressed: mouse => {
            scrubber.held = mouse.x / scrubber.width;
            scrubber.seekTo(scrubber.held);
        }
        onReleased: {
            if (rest.running)
                scrubber.seekTo(scrubber.held);
            rest.stop();
        }
    }

    // A disk has to follow the hand.
    Timer {
        id: rest

        interval: 100
        onTriggered: scrubber.seekTo(scrubber.held)
    }
}
