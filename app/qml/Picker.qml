// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A row of keys in one well, of which one is in. Tab stops once; left and right move the choice. It asks for a choice and
/// shows what `current` says.
Item {
    id: picker

    required property string name
    required property var choices
    property int current: 0
    property bool ringed: activeFocus

    signal chosen(int index)

    Accessible.focusable: true
    Accessible.name: name
    Accessible.role: Accessible.Grouping
    activeFocusOnTab: true
    implicitHeight: 30
    implicitWidth: row.implicitWidth + 4
    opacity: enabled ? 1 : 0.45

    Keys.onLeftPressed: choose(current - 1)
    Keys.onRightPressed: choose(current + 1)

    function choose(index: int) {
        if (index >= 0 && index < choices.length && index !== current)
            chosen(index);
    }

    Surface {
        anchors.fill: parent
        recipe: Surface.PickerWell
    }

    Row {
        id: row

        spacing: 2
        x: 2
        y: 2

        Repeater {
            model: picker.choices.map(words => ({ picker: picker, words: words }))

            PickerKey {}
        }
    }

    Ring {
        innerRadius: 6
        shown: picker.ringed
    }
}
