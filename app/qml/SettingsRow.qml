// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// One setting: its title, what it does, and its control to the right, or below where the pane is narrow.
Item {
    id: row

    required property string title
    property string help
    property color helpColor: Theme.soft
    property bool lined: true
    default property alias control: holder.data
    readonly property bool stacked: width < 560

    implicitHeight: stacked ? words.height + holder.height + 30 : Math.max(words.height, holder.height) + 20

    ScribedLine {
        visible: row.lined
        width: row.width
        y: -1
    }

    Column {
        id: words

        spacing: 2
        width: row.stacked ? row.width : Math.min(440, row.width - holder.width - 28)
        y: row.stacked ? 10 : Math.round((row.height - height) / 2)

        Words {
            font.pixelSize: Theme.rowSize
            font.weight: Font.DemiBold
            text: row.title
            width: parent.width
            wrapMode: Text.Wrap
        }

        Words {
            color: row.helpColor
            font.pixelSize: Theme.helpSize
            lineHeight: 17
            lineHeightMode: Text.FixedHeight
            text: row.help
            visible: text !== ""
            width: parent.width
            wrapMode: Text.Wrap
        }
    }

    Item {
        id: holder

        height: childrenRect.height
        width: childrenRect.width
        x: row.stacked ? 0 : row.width - width
        y: row.stacked ? words.y + words.height + 10 : Math.round((row.height - height) / 2)
    }
}
