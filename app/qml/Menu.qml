// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A list of what can be chosen. Each entry is an object: `text`, and where wanted `lens` (whether it has one), `lit`,
/// `keys` (the shortcut as words), `disabled`, or only `line`. The arrows move, Return or Space choose, Escape and Tab
/// leave.
FocusScope {
    id: menu

    required property string name
    property var entries: []
    property int current: -1
    property real widest: 0
    readonly property bool lenses: entries.some(entry => entry.lens === true)

    signal chosen(int index)
    signal dismissed

    Accessible.name: name
    Accessible.role: Accessible.PopupMenu
    implicitHeight: column.implicitHeight + 10
    implicitWidth: widest + 10
    z: 400

    Keys.onBacktabPressed: dismissed()
    Keys.onDownPressed: move(1)
    Keys.onEscapePressed: dismissed()
    Keys.onTabPressed: dismissed()
    Keys.onUpPressed: move(-1)

    function canChoose(index: int): bool {
        return index >= 0 && index < entries.length && !entries[index].line && !entries[index].disabled;
    }

    function choose(index: int) {
        if (canChoose(index))
            chosen(index);
    }

    /// To the next entry that can be chosen; at the end, to nowhere.
    function move(direction: int) {
        let next = current < 0 && direction < 0 ? entries.length - 1 : current + direction;
        while (next >= 0 && next < entries.length && !canChoose(next))
            next += direction;
        current = canChoose(next) ? next : current;
    }

    Surface {
        anchors.fill: parent
        recipe: Surface.Menu
    }

    ScrollView {
        id: view

        anchors.fill: parent
        anchors.margins: 5

        Column {
            id: column

            width: view.width

            Repeater {
                model: menu.entries.map(entry => ({ entry: entry, menu: menu }))

                MenuEntry {}
            }
        }
    }
}
