// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The figures of a take, in the order in which the model tells them.
Item {
    id: table

    required property var figures
    readonly property var names: [qsTr("Audio"), qsTr("Lost on the way in"), qsTr("Failed disk writes"), qsTr(
            "Clock drift"), qsTr("Highest peak")]

    implicitHeight: Math.round(21.5 * names.length)

    Repeater {
        model: table.names

        Item {
            id: row

            required property int index
            required property string modelData
            readonly property string figure: table.figures[index] ?? ""

            Accessible.name: modelData + ", " + figure
            Accessible.role: Accessible.StaticText
            height: 21.5
            width: parent?.width ?? 0
            y: Math.round(index * height)

            Words {
                Accessible.ignored: true
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.dim
                font.pixelSize: Theme.helpSize
                text: row.modelData
            }

            TabularText {
                Accessible.ignored: true
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.ink
                pixelSize: Theme.helpSize
                text: row.figure
            }
        }
    }
}
