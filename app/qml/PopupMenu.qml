// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A menu that opens at a place of the window and closes when something is chosen, or by a press anywhere else. It stays
/// within the window and scrolls where it is too long for it. Its entries have an `id` each. It shows those that there
/// were when it opened, so that a list that changes does not slip another one under the key that is about to choose.
MenuLayer {
    id: popup

    required property string name
    property var entries: []
    /// What it hangs from, in coordinates of the layer: it opens below, or above where there is more room.
    property rect place
    readonly property real roomBelow: height - place.bottom - 12
    readonly property real roomAbove: place.top - 12
    readonly property bool above: list.implicitHeight > roomBelow && roomAbove > roomBelow

    signal chosen(string id)

    menu: list
    visible: false
    onDismissed: visible = false

    /// As wide as what it hangs from, if that is wider; `first` has the keyboard.
    function open(where: rect, first: int) {
        place = where;
        list.entries = entries;
        list.current = first;
        visible = true;
        list.forceActiveFocus(Qt.PopupFocusReason);
    }

    Menu {
        id: list

        height: Math.min(implicitHeight, popup.above ? popup.roomAbove : popup.roomBelow)
        name: popup.name
        width: Math.max(implicitWidth, popup.place.width)
        x: Math.round(Math.max(8, Math.min(popup.place.x, popup.width - width - 8)))
        y: Math.round(popup.above ? popup.place.top - height - 6 : popup.place.bottom + 6)
        onChosen: index => {
            popup.dismissed();
            popup.chosen(list.entries[index].id);
        }
        onDismissed: popup.dismissed()
    }
}
