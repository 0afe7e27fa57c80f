// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The take on the deck: pause, the place in it, how long it is, where it is heard, and the end of it.
Item {
    id: bar

    required property Desk desk
    /// The key that ends it stands elsewhere already.
    property bool endless

    readonly property int keyHeight: endless ? 32 : 26

    /// The list of outputs is wanted, hanging from that item.
    signal outputsWanted(Item from)

    implicitHeight: 28

    Key {
        id: pause

        anchors.verticalCenter: parent.verticalCenter
        height: bar.keyHeight
        hint: qsTr("Pause or resume (Space)")
        name: bar.desk.pauseText
        symbol: bar.desk.model.playbackPaused ? Symbol.Play : Symbol.Pause
        text: bar.desk.pauseText
        width: 64
        onTriggered: bar.desk.togglePause()
    }

    Scrubber {
        anchors.left: pause.right
        anchors.leftMargin: 16
        anchors.right: times.left
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        fraction: bar.desk.playbackFraction
        step: bar.desk.playbackStep
        onSeek: place => bar.desk.seekPlayback(place)
    }

    // As wide as at the end of the take, so that the rail keeps its length.
    Row {
        id: times

        anchors.right: output.left
        anchors.rightMargin: 10
        anchors.verticalCenter: parent.verticalCenter

        Item {
            height: position.height
            width: length.width

            TabularText {
                id: position

                anchors.right: parent.right
                color: Theme.ink
                pixelSize: Theme.lineSize
                text: bar.desk.positionText
            }
        }

        TabularText {
            Accessible.ignored: true
            color: Theme.dim
            pixelSize: Theme.lineSize
            text: " / "
        }

        TabularText {
            id: length

            color: Theme.dim
            pixelSize: Theme.lineSize
            text: bar.desk.lengthText
        }
    }

    Key {
        id: output

        anchors.right: end.left
        anchors.rightMargin: bar.endless ? 0 : 7
        anchors.verticalCenter: parent.verticalCenter
        height: bar.keyHeight
        hint: qsTr("Choose where you hear it")
        name: qsTr("Output")
        role: Accessible.ButtonMenu
        symbol: Symbol.Speaker
        width: 32
        onTriggered: bar.outputsWanted(output)
    }

    Key {
        id: end

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        height: bar.keyHeight
        text: qsTr("Stop Playback")
        visible: !bar.endless
        width: bar.endless ? 0 : implicitWidth
        onTriggered: bar.desk.stopPlayback()
    }
}
