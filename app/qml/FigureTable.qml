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
        model: table.names.map((name, place) => ({ figure: table.figures[place] ?? "", name: name }))

        Item {
            id: row

            required property int index
            required property var modelData

            Accessible.name: modelData.name + ", " + modelData.figure
            Accessible.role: Accessible.StaticText
            height: 21.5
            width: parent?.width ?? 0
            y: Math.round(index * height)

            Words {
                Accessible.ignored: true
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.dim
                font.pixelSize: Theme.helpSize
                text: row.modelData.name
            }

            TabularText {
                Accessible.ignored: true
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.ink
                pixelSize: Theme.helpSize
                text: row.modelData.figure
            }
        }
    }
}
