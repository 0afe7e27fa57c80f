// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// One of the rows at the foot of the tray's panel.
Pressable {
    id: row

    implicitHeight: 28
    role: Accessible.MenuItem
    width: parent?.width ?? 0

    Surface {
        anchors.fill: parent
        recipe: Surface.MenuRow
        visible: row.hovered || row.down
    }

    Words {
        anchors.verticalCenter: parent.verticalCenter
        color: row.hovered ? Theme.ink : Theme.body
        text: row.name
        x: 12
    }

    Ring {
        innerRadius: 4
        shown: row.ringed
    }
}
