// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The press surface in the middle of the deck, as round as the glass.
Pressable {
    id: glass

    required property Desk desk
    /// The glass gives way a little while it is pressed.
    property real give: down ? 0.97 : 1

    Accessible.description: desk.deckTwin
    containmentMask: QtObject {
        function contains(point: point): bool {
            return Math.hypot(point.x - glass.width / 2, point.y - glass.height / 2) <= glass.width / 2;
        }
    }
    hint: desk.deckHint
    name: desk.deckName
    onTriggered: desk.pressDeck()

    Behavior on give {
        NumberAnimation {
            duration: Theme.glass
            easing.type: Easing.OutQuad
        }
    }

    Ring {
        innerRadius: glass.width / 2
        shown: glass.ringed
    }
}
