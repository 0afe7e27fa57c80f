// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The main window: the deck, the takes or the settings under one strip, and whatever stands above them.
Window {
    id: window

    required property Desk desk
    /// The system's frame is wanted.
    property bool framed: false
    property string version
    readonly property AppModel model: desk.model
    readonly property bool onScreen: visible && visibility !== Window.Minimized
    readonly property bool open: sources.visible || outputs.visible || menu.visible
    readonly property rect nowhere: Qt.rect(0, 0, 0, 0)

    signal closeWanted

    color: Theme.face
    flags: framed ? Qt.Window : Qt.Window | Qt.FramelessWindowHint
    title: qsTr("Vantiro")

    Component.onDestruction: if (onScreen) desk.removeMeterUser()
    onClosing: close => {
        close.accepted = false;
        closeWanted();
    }
    onOnScreenChanged: onScreen ? desk.addMeterUser() : desk.removeMeterUser()

    /// Where an item stands, for a menu that hangs from it.
    function placeOf(item: Item): rect {
        return item.mapToItem(page, 0, 0, item.width, item.height);
    }

    function openOutputs(from: Item) {
        outputs.entries = desk.outputEntries();
        outputs.open(placeOf(from), outputs.entries.findIndex(entry => entry.lit));
    }

    /// Gives the keyboard back to the page unless something stands above it: to where it was, or to the page itself if
    /// that is gone from sight.
    function recall() {
        if (sheets.shown || sources.visible || outputs.visible || menu.visible)
            return;
        page.forceActiveFocus(Qt.PopupFocusReason);
        if (activeFocusItem !== page && !activeFocusItem.visible)
            activeFocusItem.focus = false;
    }

    Connections {
        target: window.activeFocusItem

        function onVisibleChanged() {
            if (window.activeFocusItem?.visible === false)
                window.recall();
        }
    }

    WindowForm {
        id: form

        duration: Theme.resize
        size: window.model.showsTakes ? Qt.size(980, 620) : window.model.isAdvanced ? Qt.size(920, 620) : Qt.size(480, 580)
        window: window
    }

    TakeRows {
        id: takeRows

        source: window.model
    }

    Shortcut {
        autoRepeat: false
        enabled: !sheets.shown
        sequence: "F10"
        onActivated: strip.openMenu()
    }

    Shortcut {
        autoRepeat: false
        enabled: !sheets.shown && !window.open && strip.paneShown
        sequence: "Escape"
        onActivated: strip.toDeck()
    }

    Faceplate {
        anchors.fill: parent
    }

    // On the way to another form everything stands where it will stand, so that nothing is painted for sizes that pass.
    FocusScope {
        id: page

        anchors.horizontalCenter: parent.horizontalCenter
        focus: true
        height: form.moving ? form.size.height : parent.height
        width: form.moving ? form.size.width : parent.width

        Keys.onPressed: event => event.accepted = window.desk.pressPlaybackKey(event.key, event.modifiers, event.isAutoRepeat)

        TopStrip {
            id: strip

            blocked: sheets.shown
            desk: window.desk
            folder: takeRows.folder
            framed: window.framed
            width: parent.width
            window: window
            onMenuWanted: (left, top) => {
                sources.dismissed();
                outputs.dismissed();
                menu.open(Qt.rect(left, top, 0, 0), -1);
            }
        }

        DeckScreen {
            id: deck

            advanced: window.model.isAdvanced
            anchors.fill: parent
            anchors.topMargin: strip.height
            desk: window.desk
            visible: !strip.paneShown
            onOutputsWanted: from => window.openOutputs(from)
            onSourcesWanted: from => sources.open(window.placeOf(from), sources.entries.findIndex(entry => entry.lit))
        }

        Loader {
            active: window.model.showsTakes
            anchors.fill: parent
            anchors.topMargin: strip.height
            Component.onCompleted: setSource("TakesPage.qml", { desk: window.desk, takes: takeRows })
            onLoaded: (item as TakesPage).outputsWanted.connect(window.openOutputs)
        }

        Loader {
            active: window.model.showsSettings && !window.model.showsTakes
            anchors.fill: parent
            anchors.topMargin: strip.height
            Component.onCompleted: setSource("SettingsPane.qml", {
                desk: window.desk,
                takes: takeRows,
                version: window.version
            })
        }
    }

    WindowEdges {
        visible: !window.framed && window.visibility === Window.Windowed
    }

    PopupMenu {
        id: sources

        entries: window.desk.sourceEntries
        name: qsTr("Sources")
        onChosen: id => window.desk.chooseSourceEntry(id)
        onVisibleChanged: if (!visible) window.recall()
    }

    PopupMenu {
        id: outputs

        name: qsTr("Outputs")
        onChosen: id => window.desk.chooseOutput(id)
        onVisibleChanged: if (!visible) window.recall()
    }

    MainMenu {
        id: menu

        blocked: sheets.shown
        desk: window.desk
        onAboutWanted: sheets.about = true
        onCloseWanted: window.close()
        onVisibleChanged: if (!visible) window.recall()
    }

    Sheets {
        id: sheets

        desk: window.desk
        version: window.version
        onShownChanged: {
            sources.visible = false;
            outputs.visible = false;
            menu.visible = false;
            window.recall();
        }
    }

    // A sheet holds the page, not the window: without a frame it can still be moved, put away and closed.
    Item {
        height: strip.height
        visible: sheets.shown && !window.framed
        width: parent.width
        z: 600

        WindowMover {
            anchors.fill: parent
            framed: window.framed
            window: window
        }

        WindowKeys {
            anchors.right: parent.right
            anchors.rightMargin: 11
            stops: false
            window: window
            y: 8
        }
    }
}
