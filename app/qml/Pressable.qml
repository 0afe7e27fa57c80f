// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// What everything that is pressed has in common: pointer, keyboard, accessible action, tooltip. A click never moves the
/// keyboard's focus, so a focus that shows came from the keyboard.
Item {
    id: pressable

    /// What a screen reader says.
    required property string name
    property string hint
    property int role: Accessible.Button
    /// Whether Tab stops here.
    property bool stops: true
    property bool hovered: hover.hovered
    property bool down: tap.pressed || held
    property bool ringed: activeFocus
    /// The key of the keyboard that is down; 0 is none.
    property int heldKey
    readonly property bool held: heldKey !== 0
    /// Long enough of this brings the tooltip.
    readonly property bool asks: (pointed || ringed) && !down && hint !== ""
    readonly property bool pointed: hover.hovered || (ground.hovered && contains(mapFromItem(parent, ground.point.position)))
    property real press: down ? 1 : 0
    property real glimmer: hovered && enabled ? 1 : 0

    signal triggered

    Accessible.description: hint
    Accessible.focusable: stops
    Accessible.name: name
    Accessible.role: role
    Accessible.onPressAction: if (pressable.enabled) pressable.triggered()
    activeFocusOnTab: stops

    Behavior on press {
        NumberAnimation {
            duration: pressable.down ? Theme.keyDown : Theme.keyUp
            easing.type: Easing.OutQuad
        }
    }
    Behavior on glimmer {
        NumberAnimation {
            duration: pressable.hovered ? Theme.keyDown : Theme.keyUp
            easing.type: Easing.OutQuad
        }
    }

    Keys.enabled: enabled && visible
    Keys.onPressed: event => {
        const presses = event.key === Qt.Key_Space || event.key === Qt.Key_Return || event.key === Qt.Key_Enter;
        event.accepted = presses && isPlain(event.modifiers);
        if (event.accepted && !event.isAutoRepeat && !held)
            heldKey = event.key;
    }
    Keys.onReleased: event => {
        event.accepted = held && event.key === heldKey && !event.isAutoRepeat;
        if (event.accepted)
            release(event.modifiers);
    }
    onActiveFocusChanged: heldKey = 0
    onAsksChanged: tip.active = false
    onEnabledChanged: heldKey = 0
    onVisibleChanged: heldKey = 0

    /// With Ctrl, Alt or Super a key means something else.
    function isPlain(modifiers: int): bool {
        return (modifiers & ~(Qt.ShiftModifier | Qt.KeypadModifier)) === 0;
    }

    /// The key of the keyboard that was held comes up.
    function release(modifiers: int) {
        heldKey = 0;
        if (isPlain(modifiers))
            triggered();
    }

    HoverHandler {
        id: hover
    }

    TapHandler {
        id: tap

        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: pressable.triggered()
    }

    // What is disabled is told nothing of the pointer; what it stands on is.
    HoverHandler {
        id: ground

        enabled: !pressable.enabled && pressable.hint !== ""
        parent: pressable.parent
    }

    Timer {
        interval: 700
        running: pressable.asks
        onTriggered: tip.active = true
    }

    Loader {
        id: tip

        active: false
        source: "ToolTip.qml"
        onLoaded: (item as ToolTip).show(pressable, pressable.hint)
    }
}
