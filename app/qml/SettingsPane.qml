// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The settings. Each control writes at once, there is nothing to confirm.
Item {
    id: pane

    required property Desk desk
    required property string version
    required property TakeRows takes
    readonly property AppModel model: desk.model

    component Section: Item {
        property alias label: legend.label

        height: 32
        width: parent?.width ?? 0

        Legend {
            id: legend

            label: ""
            y: 14
        }
    }
    component Switch: SettingsRow {
        id: line

        property bool on

        signal switched(bool on)

        Toggle {
            checked: line.on
            name: line.title
            onToggled: on => line.switched(on)
        }
    }

    Surface {
        anchors.bottomMargin: Theme.margin - 4
        anchors.fill: parent
        anchors.leftMargin: Theme.margin
        anchors.rightMargin: Theme.margin
        recipe: Surface.Plate

        ScrollView {
            id: view

            anchors.fill: parent
            anchors.bottomMargin: 1
            anchors.leftMargin: 14
            anchors.rightMargin: 30
            anchors.topMargin: 1
            lineInset: 9
            lineOutside: 22

            Column {
                width: view.width - 20
                x: 10

                Section { label: qsTr("Recording") }

                SettingsRow {
                    help: pane.takes.folder
                    helpColor: Theme.body
                    lined: false
                    title: qsTr("Takes folder")
                    width: parent.width

                    Key {
                        height: 28
                        text: qsTr("Show in Finder")
                        onTriggered: pane.desk.showTakesFolder()
                    }
                }

                Switch {
                    help: qsTr("When a take ends, Finder opens with the file selected.")
                    on: pane.model.revealAfterTake
                    title: qsTr("Show each take in Finder")
                    width: parent.width
                    onSwitched: on => pane.model.revealAfterTake = on
                }

                Section { label: qsTr("Source") }

                Switch {
                    help: qsTr("Vantiro takes the input or app that carries the mix. Off: the source changes only when you choose one.")
                    lined: false
                    on: pane.model.autoPick
                    title: qsTr("Pick the source for me")
                    width: parent.width
                    onSwitched: on => pane.model.autoPick = on
                }

                Section { label: qsTr("Controls") }

                Switch {
                    help: qsTr("Control Option Command R starts and stops a take while your DJ app is in front.")
                    lined: false
                    on: pane.model.hotkeyEnabled
                    title: qsTr("Record from anywhere")
                    width: parent.width
                    onSwitched: on => pane.model.hotkeyEnabled = on
                }

                Switch {
                    help: qsTr("A click in this window asks first. The hotkey and the menu bar stop at once.")
                    on: pane.model.confirmStop
                    title: qsTr("Ask before stopping")
                    width: parent.width
                    onSwitched: on => pane.model.confirmStop = on
                }

                Switch {
                    help: qsTr("For Shortcuts, a Stream Deck or a script: vantiro://record, stop, toggle, play. Off by default, because a web page can open such a link too.")
                    on: pane.model.allowsURLControl
                    title: qsTr("Let links control recording")
                    width: parent.width
                    onSwitched: on => pane.model.allowsURLControl = on
                }

                Section { label: qsTr("App") }

                Switch {
                    help: qsTr("The key, the clock and the meter, one click away.")
                    lined: false
                    on: pane.model.showsMenuBarItem
                    title: qsTr("Show in the menu bar")
                    width: parent.width
                    onSwitched: on => pane.model.showsMenuBarItem = on
                }

                Switch {
                    help: qsTr("Vantiro starts with your Mac.")
                    on: pane.model.opensAtLogin
                    title: qsTr("Open at login")
                    width: parent.width
                    onSwitched: on => pane.desk.setOpensAtLogin(on)
                }

                Switch {
                    help: qsTr("The platter turns, the arm swings and the clock's ring runs. The meter moves either way.")
                    on: pane.model.deckMotion
                    title: qsTr("Deck motion")
                    width: parent.width
                    onSwitched: on => pane.model.deckMotion = on
                }

                Words {
                    bottomPadding: 16
                    color: Theme.dim
                    font.pixelSize: Theme.lineSize
                    text: qsTr("Vantiro %1").arg(pane.version)
                    topPadding: 16
                }
            }
        }

        Rectangle {
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 1
            anchors.left: parent.left
            anchors.leftMargin: 1
            anchors.right: parent.right
            anchors.rightMargin: 16
            height: 28
            radius: 7
            visible: view.scrolls

            gradient: Gradient {
                GradientStop { color: Theme.plateFade; position: 0 }
                GradientStop { color: Theme.plateEnd; position: 1 }
            }
        }
    }
}
