// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// One row of a menu.
Pressable {
    id: row

    required property int index
    /// The `entry` that it shows, and its `menu`.
    required property var modelData
    readonly property var menu: modelData.menu
    readonly property var entry: modelData.entry
    readonly property bool current: index === menu.current
    readonly property bool line: entry.line === true
    /// Where the words begin.
    readonly property int indent: menu.lenses ? 28 : 12

    Accessible.checkable: entry.lens === true
    Accessible.checked: entry.lit === true
    Accessible.description: shortcut.text
    Accessible.focusable: true
    Accessible.ignored: line
    enabled: !line && entry.disabled !== true
    focus: current
    implicitHeight: line ? 11 : 34
    implicitWidth: line ? 0 : Math.ceil(words.implicitWidth + shortcut.implicitWidth) + indent + 12 + (shortcut.text !== "" ? 28 : 0)
    name: line ? "" : entry.text
    role: Accessible.MenuItem
    stops: false
    width: parent?.width ?? 0

    onHoveredChanged: if (hovered && enabled) menu.current = index
    onTriggered: menu.choose(index)
    Component.onCompleted: menu.widest = Math.max(menu.widest, implicitWidth)

    Surface {
        anchors.fill: parent
        recipe: Surface.MenuRow
        visible: row.current
    }

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.menuLine
        height: 1
        visible: row.line
        width: parent.width - 8
        x: 4
    }

    LitLens {
        anchors.verticalCenter: parent.verticalCenter
        lit: row.entry.lit === true
        visible: row.entry.lens === true
        x: 10
    }

    Words {
        id: words

        Accessible.ignored: true
        anchors.verticalCenter: parent.verticalCenter
        color: row.enabled ? Theme.ink : Theme.off
        elide: Text.ElideRight
        text: row.name
        width: Math.min(implicitWidth, row.width - row.indent - 10)
        x: row.indent
    }

    Words {
        id: shortcut

        Accessible.ignored: true
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        color: row.enabled ? Theme.soft : Theme.off
        font.pixelSize: Theme.lineSize
        text: row.entry.keys ?? ""
        visible: text !== ""
    }
}
