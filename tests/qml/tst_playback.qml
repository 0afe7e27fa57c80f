// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Vantiro

TestCase {
    id: playback

    property MainWindow shown
    readonly property Desk desk: player.desk

    name: "Playback"
    when: windowShown

    function initTestCase() {
        Theme.reducedMotion = true;
        player.play();
        compare(desk.phase, Desk.Playing);
        shown = maker.createObject(null, { desk: player.desk, version: "1.2.3" });
        shown.show();
        shown.requestActivate();
        tryVerify(() => shown.active);
    }

    function cleanupTestCase() {
        shown.destroy();
        Theme.reducedMotion = false;
    }

    function focused(): string {
        return reader.name(shown.activeFocusItem);
    }

    function tabTo(name: string) {
        for (let stop = 0; stop < 40 && focused() !== name; ++stop)
            keyClick(Qt.Key_Tab);
        compare(focused(), name);
    }

    function shows(): string {
        return desk.pauseText + " " + desk.positionText;
    }

    Component {
        id: maker

        MainWindow {}
    }

    Component {
        id: fields

        Field { name: "Field"; text: "" }
    }

    function test_the_keyboard_pauses_and_seeks_where_nothing_else_wants_its_keys() {
        keyClick(Qt.Key_Space);
        compare(shows(), "Play 0:00");
        keyClick(Qt.Key_Right, Qt.ShiftModifier);
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Left);
        compare(shows(), "Play 1:05");
        // A click never moves the keyboard to a key, so Space still pauses.
        mouseClick(shown.contentItem, 52, 556);
        compare(shows(), "Pause 1:05");
        keyClick(Qt.Key_Space);
        compare(shows(), "Play 1:05");
        tabTo("SETTINGS");
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Space);
        compare(shows(), "Play 1:10");
        compare(desk.model.showsSettings, true);
        // A field keeps what it has no use for to itself, such as Left at its beginning.
        const field = fields.createObject(shown.activeFocusItem);
        field.children[2].forceActiveFocus();
        keyClick(Qt.Key_Left);
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Right);
        compare(shows(), "Play 1:10");
        field.destroy();
        desk.model.showsSettings = false;
        tabTo("Place in the take");
        keyClick(Qt.Key_Left, Qt.ShiftModifier);
        compare(shows(), "Play 0:10");
        keyClick(Qt.Key_Escape);
        compare(desk.phase, Desk.Playing);
        // It ends, and nothing is left that Space could mean.
        desk.stopPlayback();
        compare(focused(), "");
        keyClick(Qt.Key_Space);
        compare(desk.phase, Desk.NoSource);
    }

    function test_an_output_is_chosen_on_every_page_data() {
        return [{ tag: "simple" }, { tag: "advanced", advanced: true }, { tag: "takes", takes: true }];
    }

    function test_an_output_is_chosen_on_every_page(data) {
        desk.model.isAdvanced = data.advanced ?? false;
        desk.model.showsTakes = data.takes ?? false;
        tabTo("Output");
        keyClick(Qt.Key_Return);
        compare(focused(), "Default output");
        keyClick(Qt.Key_Escape);
        compare(focused(), "Output");
        tabTo("Pause");
        desk.model.isAdvanced = false;
        desk.model.showsTakes = false;
    }
}
