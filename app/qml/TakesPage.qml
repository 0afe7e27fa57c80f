// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Every take, newest first, with the key below that makes another one.
Item {
    id: page

    required property Desk desk
    required property TakeRows takes

    /// The list of outputs is wanted, hanging from that item.
    signal outputsWanted(Item from)

    ListView {
        id: list

        Accessible.name: qsTr("Takes")
        Accessible.role: Accessible.List
        activeFocusOnTab: count > 0
        anchors.bottom: foot.top
        anchors.left: parent.left
        anchors.leftMargin: Theme.margin
        anchors.right: parent.right
        anchors.rightMargin: 32
        anchors.top: parent.top
        bottomMargin: 6
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        currentIndex: 0
        highlightMoveDuration: 0
        keyNavigationEnabled: true
        model: page.takes
        topMargin: 2

        delegate: TakeRow {
            ringed: ListView.isCurrentItem && ListView.view.activeFocus
            width: ListView.view?.width ?? 0
        }
    }

    ScrollLine {
        anchors.bottom: list.bottom
        anchors.bottomMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.top: list.top
        anchors.topMargin: 6
        of: list
    }

    Surface {
        anchors.bottom: foot.top
        anchors.bottomMargin: 12
        anchors.left: parent.left
        anchors.margins: Theme.margin
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.topMargin: 2
        recipe: Surface.Plate
        visible: page.desk.model.takesRead && list.count === 0

        Column {
            anchors.centerIn: parent
            anchors.verticalCenterOffset: -24
            spacing: 8

            SleevePicture {
                anchors.horizontalCenter: parent.horizontalCenter
                height: 184
            }

            Words {
                anchors.horizontalCenter: parent.horizontalCenter
                font.pixelSize: Theme.headingSize
                font.weight: Font.DemiBold
                text: qsTr("No takes yet.")
            }

            Words {
                anchors.horizontalCenter: parent.horizontalCenter
                color: Theme.soft
                font.pixelSize: Theme.rowSize
                text: qsTr("Press Record below, play your mix, then press Stop. The take appears here.")
            }
        }
    }

    Surface {
        id: foot

        anchors.bottom: parent.bottom
        height: 62
        recipe: Surface.Foot
        width: parent.width

        StartStopKey {
            id: key

            desk: page.desk
            size: Key.Foot
            width: 168
            x: Theme.margin
            y: 12
        }

        PlaybackBar {
            id: playback

            anchors.left: key.right
            anchors.leftMargin: Theme.margin
            anchors.right: parent.right
            anchors.rightMargin: Theme.margin
            desk: page.desk
            endless: true
            height: 32
            visible: page.desk.phase === Desk.Playing
            y: 15
            onOutputsWanted: from => page.outputsWanted(from)
        }

        Column {
            anchors.left: key.right
            anchors.leftMargin: Theme.margin
            anchors.right: last.left
            anchors.rightMargin: Theme.margin
            visible: !playback.visible
            y: 11

            Words {
                elide: Text.ElideRight
                font.pixelSize: Theme.rowSize
                font.weight: Font.DemiBold
                text: page.desk.model.sourceName
                width: parent.width
            }

            Words {
                color: Theme.soft
                elide: Text.ElideRight
                font.pixelSize: Theme.lineSize
                text: page.desk.sourceLine
                width: parent.width
            }
        }

        PlayLastTakeKey {
            id: last

            anchors.right: parent.right
            anchors.rightMargin: Theme.margin
            desk: page.desk
            height: 32
            visible: !playback.visible
            y: 15
        }
    }
}
