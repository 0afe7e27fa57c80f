// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// One take of the list: when it was recorded, how long it is and what kind of file.
Item {
    id: row

    required property string day
    required property string time
    required property string length
    required property string kind
    property bool ringed

    Accessible.name: `${day}, ${time}, ${length}, ${kind}`
    Accessible.role: Accessible.ListItem
    height: 70

    Surface {
        height: 64
        recipe: Surface.Plate
        width: row.width

        Words {
            id: date

            Accessible.ignored: true
            font.pixelSize: Theme.takeSize
            font.weight: Font.DemiBold
            text: row.day
            x: 16
            y: 7
        }

        TabularText {
            Accessible.ignored: true
            anchors.left: date.right
            anchors.leftMargin: 10
            color: Theme.dim
            pixelSize: Theme.lineSize
            text: row.time
            y: 17
        }

        Words {
            Accessible.ignored: true
            color: Theme.soft
            font.pixelSize: Theme.lineSize
            text: row.kind
            x: 16
            y: 38
        }

        TabularText {
            Accessible.ignored: true
            anchors.right: parent.right
            anchors.rightMargin: 16
            color: Theme.ink
            pixelSize: Theme.takeSize
            text: row.length
            weight: 600
            y: 7
        }

        Ring {
            innerRadius: Theme.bigKeyRadius
            shown: row.ringed
        }
    }
}
