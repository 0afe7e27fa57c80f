// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The menu behind the wordmark, and the keys of its entries, which work while no sheet is up.
PopupMenu {
    id: mainMenu

    required property Desk desk
    required property bool blocked

    signal aboutWanted
    signal closeWanted

    property list<MenuCommand> commands: [
        MenuCommand {
            enabled: !mainMenu.blocked
            sequence: "Ctrl+R"
            words: mainMenu.desk.recordCommand
            onActivated: mainMenu.toggleTake()
        },
        MenuCommand {
            enabled: !mainMenu.blocked
            ends: true
            sequence: "Ctrl+Shift+T"
            words: qsTr("Show Takes")
            onActivated: mainMenu.desk.model.showsTakes = true
        },
        MenuCommand {
            enabled: !mainMenu.blocked
            sequence: "Ctrl+,"
            words: qsTr("Settings…")
            onActivated: mainMenu.openSettings()
        },
        MenuCommand {
            enabled: !mainMenu.blocked
            ends: true
            words: qsTr("About Vantiro")
            onActivated: mainMenu.aboutWanted()
        },
        MenuCommand {
            enabled: !mainMenu.blocked
            sequence: "Ctrl+W"
            words: qsTr("Close Window")
            onActivated: mainMenu.closeWanted()
        },
        MenuCommand {
            sequence: "Ctrl+Q"
            words: qsTr("Quit")
            onActivated: mainMenu.desk.departure.quit()
        }
    ]
    /// The command of each row; a line has none.
    readonly property var rows: rowsOf(commands.length)

    entries: rows.map(command => command ? ({ id: command.words, keys: command.nativeText, text: command.words }) : ({ line: true }))
    name: qsTr("Vantiro menu")
    // What would do something else than it said when the menu opened does nothing.
    onChosen: id => rows.find(command => command?.words === id)?.activated()

    function rowsOf(count: int): var {
        const rows = [];
        for (let place = 0; place < count; ++place)
            rows.push(...(commands[place].ends ? [commands[place], null] : [commands[place]]));
        return rows;
    }

    /// A key that bounces, or is pressed twice in haste, does not end the take that it began.
    function toggleTake() {
        const hasty = rest.running;
        rest.restart();
        if (!hasty)
            desk.toggleTake();
    }

    function openSettings() {
        desk.model.isAdvanced = true;
        desk.model.showsTakes = false;
        desk.model.showsSettings = true;
    }

    Timer {
        id: rest

        interval: 300
    }
}
