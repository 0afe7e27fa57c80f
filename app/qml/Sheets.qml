// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Everything that the window asks or tells in a sheet, one at a time: what concerns the end of the program first.
Item {
    id: sheets

    required property Desk desk
    required property string version
    property bool about: false
    readonly property Departure departure: desk.departure
    readonly property bool shown: asked !== Sheets.Nothing
    readonly property int asked: departure.question === Departure.Take ? Sheets.Take : departure.question
        === Departure.Saving ? Sheets.Saving : departure.question === Departure.Copies ? Sheets.Copies
        : desk.errorMessage !== "" ? Sheets.Alert : desk.asksToStop ? Sheets.Stop : about ? Sheets.About : Sheets.Nothing

    enum Asked {
        Nothing,
        Take,
        Saving,
        Copies,
        Alert,
        Stop,
        About
    }

    anchors.fill: parent

    SheetLayer {
        text: qsTr("Stop and save it, or keep recording without the window. Open Vantiro again to stop it later.")
        title: qsTr("A take is recording")
        visible: sheets.asked === Sheets.Take
        onDismissed: sheets.departure.cancel()

        Key { text: qsTr("Cancel"); onTriggered: sheets.departure.cancel() }
        Key { text: qsTr("Keep Recording"); onTriggered: sheets.departure.keepRecording() }
        Key { lens: true; light: Lamp.Red; text: qsTr("Stop and Save"); onTriggered: sheets.departure.stopAndSave() }
    }

    SheetLayer {
        text: qsTr("The take is being closed. If Vantiro quits now, the recorder finishes it by itself.")
        title: qsTr("Saving…")
        visible: sheets.asked === Sheets.Saving

        Key { text: qsTr("Quit Now"); onTriggered: sheets.departure.quitNow() }
    }

    SheetLayer {
        text: qsTr("Vantiro can finish them without its window and quit then. A copy that is cut off is made again the next time.")
        title: qsTr("Copies of your takes are being made")
        visible: sheets.asked === Sheets.Copies
        onDismissed: sheets.departure.cancel()

        Key { text: qsTr("Cancel"); onTriggered: sheets.departure.cancel() }
        Key { text: qsTr("Quit Now"); onTriggered: sheets.departure.quitNow() }
        Key { text: qsTr("Quit When Done"); onTriggered: sheets.departure.quitWhenDone() }
    }

    SheetLayer {
        text: sheets.desk.errorMessage
        title: qsTr("Vantiro needs your attention")
        visible: sheets.asked === Sheets.Alert
        onDismissed: sheets.desk.dismissError()

        Key {
            // What a screen reader says of the key that has the focus, so that a new message is heard as well.
            Accessible.description: sheets.desk.errorMessage
            text: qsTr("OK")
            width: 96
            onTriggered: sheets.desk.dismissError()
        }
    }

    SheetLayer {
        title: qsTr("Stop and save this take?")
        visible: sheets.asked === Sheets.Stop
        onDismissed: sheets.desk.stopDeclined()

        Key { text: qsTr("Keep Recording"); onTriggered: sheets.desk.stopDeclined() }
        Key { lens: true; light: Lamp.Red; text: qsTr("Stop and Save"); onTriggered: sheets.desk.stopAssented() }
    }

    SheetLayer {
        engraved: true
        text: qsTr("Version %1").arg(sheets.version) + "\n\n" + qsTr(
            "Free software under the GNU General Public License, version 3 or later. It comes without any warranty.")
            + "\n\n" + qsTr("The typeface is Barlow Semi Condensed, under the SIL Open Font License 1.1.")
        title: qsTr("Vantiro")
        visible: sheets.asked === Sheets.About
        onDismissed: sheets.about = false

        Key { text: qsTr("OK"); width: 96; onTriggered: sheets.about = false }
    }
}
