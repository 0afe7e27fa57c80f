// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The small window behind the item in the tray: the key, the clock, the source and the meter without the main window.
/// It opens no audio by itself, so its meter is there only while another screen has one.
Window {
    id: panel

    required property Desk desk
    readonly property int inner: width - 2 * Theme.gap - 4
    readonly property bool timed: clock.text !== ""

    color: Theme.face
    flags: Qt.Tool | Qt.FramelessWindowHint | Qt.WindowStaysOnTopHint
    height: column.y + column.height + 6
    title: qsTr("Vantiro Panel")
    width: 300

    Shortcut {
        autoRepeat: false
        enabled: !sources.visible
        sequence: "Escape"
        onActivated: panel.hide()
    }

    Faceplate {
        anchors.fill: parent
    }

    Column {
        id: column

        spacing: Theme.gap
        width: panel.inner
        x: Theme.gap + 2
        y: Theme.gap + 2

        StartStopKey {
            asks: false
            desk: panel.desk
            height: 52
            width: parent.width
        }

        SourceStrip {
            id: source

            fixed: panel.desk.sourceFixed
            hint: panel.desk.sourceHint
            line: panel.desk.sourceLine
            source: panel.desk.model.sourceName
            width: parent.width
            onTriggered: sources.open(Qt.rect(source.parent.x, 2, source.width, 0), sources.entries.findIndex(entry => entry.lit))
        }

        Item {
            height: 26
            visible: panel.timed || panel.desk.metered
            width: parent.width

            TabularText {
                id: clock

                anchors.verticalCenter: parent.verticalCenter
                pixelSize: Theme.takeSize
                text: panel.desk.model.menuBarElapsed
                visible: panel.timed
                x: panel.desk.metered ? 0 : Math.round((parent.width - width) / 2)
            }

            MeterView {
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                compact: true
                height: 26
                model: panel.desk.model
                segments: panel.timed ? 32 : 48
                visible: panel.desk.metered
                width: parent.width - (panel.timed ? Math.ceil(clock.implicitWidth) + 14 : 0)
            }
        }

        Column {
            width: parent.width

            ScribedLine {
                width: parent.width
            }

            Item {
                height: 4
                width: 1
            }

            MenuBarRow {
                name: qsTr("Open Vantiro")
                onTriggered: {
                    panel.hide();
                    panel.desk.openWindow();
                }
            }

            MenuBarRow {
                name: qsTr("Show Takes")
                onTriggered: {
                    panel.hide();
                    panel.desk.showTakes();
                }
            }

            MenuBarRow {
                name: qsTr("Quit")
                onTriggered: {
                    panel.hide();
                    panel.desk.departure.quit();
                }
            }
        }
    }

    PopupMenu {
        id: sources

        entries: panel.desk.sourceEntries
        name: qsTr("Sources")
        onChosen: id => panel.desk.chooseSourceEntry(id)
    }
}
