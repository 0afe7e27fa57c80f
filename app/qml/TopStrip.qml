// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The window's upper edge: the wordmark, which opens the menu, the keys that change the page, and the window's own
/// keys. Without a frame it moves the window.
Item {
    id: strip

    required property Desk desk
    required property Window window
    required property bool framed
    /// A sheet is up: the keys rest, and the window's own stand above it.
    required property bool blocked
    /// Where the takes are, for the takes page.
    required property string folder
    readonly property AppModel model: desk.model
    readonly property bool paneShown: model.showsTakes || model.showsSettings

    /// The menu is wanted, its upper left corner at this place of the strip.
    signal menuWanted(real left, real top)

    implicitHeight: Theme.stripHeight

    function openMenu() {
        menuWanted(Theme.margin, mark.y + mark.height);
    }

    function toDeck() {
        model.showsTakes = false;
        model.showsSettings = false;
    }

    WindowMover {
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        anchors.fill: parent
        framed: strip.framed
        window: strip.window
        onPressed: mouse => {
            if (mouse.button === Qt.RightButton)
                strip.menuWanted(mouse.x, mouse.y);
        }
    }

    Pressable {
        id: mark

        enabled: !strip.blocked
        height: 28
        hint: qsTr("Menu (F10)")
        name: qsTr("Vantiro menu")
        role: Accessible.ButtonMenu
        width: wordmark.width + 12
        x: Theme.margin - 6
        y: 8
        onTriggered: strip.openMenu()

        Wordmark {
            id: wordmark

            Accessible.ignored: true
            color: mark.hovered ? Theme.lime : Theme.ink
            x: 6
            y: 5 + Math.round(mark.press)
        }

        Ring {
            anchors.margins: 0
            innerRadius: 1
            shown: mark.ringed
        }
    }

    Row {
        enabled: !strip.blocked
        spacing: 10
        visible: strip.model.showsTakes
        x: 124
        y: 10

        Words {
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.soft
            elide: Text.ElideMiddle
            font.pixelSize: Theme.helpSize
            text: strip.folder
            width: Math.min(implicitWidth, strip.width - 620)
        }

        Key {
            hint: qsTr("Show the takes folder in Finder")
            size: Key.Small
            text: qsTr("FINDER")
            onTriggered: strip.desk.showTakesFolder()
        }
    }

    Row {
        anchors.right: parent.right
        anchors.rightMargin: strip.framed ? Theme.margin : 66
        enabled: !strip.blocked
        spacing: 7
        y: 10

        Key {
            hint: qsTr("What to connect where, and your record level")
            size: Key.Small
            text: qsTr("SETUP")
            onTriggered: strip.desk.openGuide()
        }

        Key {
            hint: strip.model.showsTakes ? qsTr("Back to the deck") : qsTr(
                "Your takes: the shape of each set, where it clipped, play and post")
            lit: strip.model.showsTakes
            size: Key.Small
            text: qsTr("TAKES")
            onTriggered: strip.model.showsTakes ? strip.toDeck() : strip.model.showsTakes = true
        }

        Key {
            size: Key.Small
            text: strip.model.isAdvanced ? qsTr("SIMPLE") : qsTr("ADVANCED")
            visible: !strip.model.showsTakes
            onTriggered: strip.model.isAdvanced = !strip.model.isAdvanced
        }

        Key {
            hint: strip.paneShown ? qsTr("Back to the deck") : ""
            lit: strip.model.showsSettings && !strip.model.showsTakes
            size: Key.Small
            text: strip.paneShown ? qsTr("DECK") : qsTr("SETTINGS")
            onTriggered: strip.paneShown ? strip.toDeck() : strip.model.showsSettings = true
        }
    }

    WindowKeys {
        anchors.right: parent.right
        anchors.rightMargin: 11
        visible: !strip.framed && !strip.blocked
        window: strip.window
        y: 8
    }
}
