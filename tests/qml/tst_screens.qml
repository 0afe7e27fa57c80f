// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Vantiro

TestCase {
    id: screens

    property MainWindow shown

    name: "Screens"
    when: windowShown

    function initTestCase() {
        Theme.reducedMotion = true;
        shown = maker.createObject(null, { desk: stage.desk, version: "1.2.3" });
        shown.show();
        shown.requestActivate();
        tryVerify(() => shown.active);
    }

    function cleanupTestCase() {
        shown.destroy();
        Theme.reducedMotion = false;
    }

    function init() {
        stage.reset();
        keyClick(Qt.Key_Escape);
        // Each begins with the keyboard at no key.
        if (focused() !== "")
            shown.activeFocusItem.focus = false;
    }

    /// What a screen reader would say of the item that has the keyboard.
    function focused(): string {
        return reader.name(shown.activeFocusItem);
    }

    function keys(...all) {
        all.forEach(key => keyClick(key));
    }

    function tabs(count: int): var {
        return Array(count).fill(Qt.Key_Tab);
    }

    Component {
        id: maker

        MainWindow {}
    }

    function test_the_window_takes_the_size_of_its_form_and_is_never_smaller_data() {
        return [
            { tag: "simple", width: 480, height: 580 },
            { tag: "advanced", advanced: true, width: 920, height: 620 },
            { tag: "takes", takes: true, width: 980, height: 620 },
            { tag: "settings", settings: true, width: 480, height: 580 },
        ];
    }

    function test_the_window_takes_the_size_of_its_form_and_is_never_smaller(data) {
        const model = stage.desk.model;
        model.isAdvanced = data.advanced ?? false;
        model.showsTakes = data.takes ?? false;
        model.showsSettings = data.settings ?? false;
        tryCompare(shown, "width", data.width);
        tryCompare(shown, "height", data.height);
        compare([shown.minimumWidth, shown.minimumHeight], [data.width, data.height]);
        shown.width = 1200;
        model.deckMotion = !model.deckMotion;
        compare(shown.width, 1200);
        shown.width = data.width;
    }

    function test_an_alert_has_the_keyboard_until_it_is_dismissed_and_gives_it_back() {
        keys(Qt.Key_Tab, Qt.Key_Tab);
        compare(focused(), "SETUP");
        stage.fail("The disk is full.");
        compare(focused(), "OK");
        keys(Qt.Key_Tab);
        compare(focused(), "OK");
        stage.fail("Another one.");
        compare(focused(), "OK");
        keyClick(Qt.Key_T, Qt.ControlModifier | Qt.ShiftModifier);
        compare(stage.desk.model.showsTakes, false);
        keys(Qt.Key_Return);
        compare(stage.desk.errorMessage, "");
        compare(focused(), "SETUP");
    }

    function test_an_alert_closes_an_open_menu_and_has_the_keyboard_data() {
        return [
            { tag: "main menu", open: [Qt.Key_F10], first: "Record" },
            { tag: "sources", open: [...tabs(9), Qt.Key_Return], first: "Open the setup guide" },
            { tag: "one for the other", open: [...tabs(9), Qt.Key_Return, Qt.Key_F10], first: "Record" },
        ];
    }

    function test_an_alert_closes_an_open_menu_and_has_the_keyboard(data) {
        keys(...data.open, Qt.Key_Down);
        compare(focused(), data.first);
        stage.fail("The disk is full.");
        compare(shown.open, false);
        compare(focused(), "OK");
        keys(Qt.Key_Return);
        compare(stage.desk.errorMessage, "");
    }

    function test_a_key_that_goes_from_sight_loses_the_keyboard() {
        const model = stage.desk.model;
        model.showsTakes = true;
        keys(Qt.Key_Tab, Qt.Key_Tab);
        compare(focused(), "FINDER");
        keys(Qt.Key_Escape);
        compare(focused(), "");
        stage.record();
        keys(...tabs(8));
        compare(focused(), "Stop recording");
        keyClick(Qt.Key_T, Qt.ControlModifier | Qt.ShiftModifier);
        keys(Qt.Key_Space);
        compare(stage.desk.asksToStop, false);
        keys(Qt.Key_Tab);
        verify(shown.activeFocusItem.visible);
    }

    function test_the_takes_key_leads_from_the_takes_to_the_deck() {
        const model = stage.desk.model;
        model.showsSettings = true;
        model.showsTakes = true;
        keys(...tabs(4));
        compare(focused(), "TAKES");
        keys(Qt.Key_Return);
        verify(!model.showsTakes && !model.showsSettings);
    }

    function test_a_question_begins_at_the_safe_key_and_Escape_takes_it() {
        stage.record();
        stage.desk.pressKey();
        compare(focused(), "Keep Recording");
        keys(Qt.Key_Tab);
        compare(focused(), "Stop and Save");
        keys(Qt.Key_Tab);
        compare(focused(), "Keep Recording");
        keys(Qt.Key_Backtab);
        compare(focused(), "Stop and Save");
        keys(Qt.Key_Escape);
        compare(stage.desk.asksToStop, false);
        stage.desk.pressKey();
        compare(focused(), "Keep Recording");
        keys(Qt.Key_Escape);
    }

    function test_quitting_with_a_take_asks_and_Escape_stays() {
        stage.record();
        keyClick(Qt.Key_Q, Qt.ControlModifier);
        compare(stage.desk.departure.question, Departure.Take);
        compare(focused(), "Cancel");
        keys(Qt.Key_Escape);
        compare(stage.desk.departure.question, Departure.None);
    }

    function test_the_menu_opens_moves_chooses_and_closes_by_the_keyboard() {
        keys(Qt.Key_F10, Qt.Key_Down);
        compare(focused(), "Record");
        keys(Qt.Key_Down, Qt.Key_Return);
        compare(stage.desk.model.showsTakes, true);
        keys(Qt.Key_Escape);
        compare(stage.desk.model.showsTakes, false);
        keys(Qt.Key_F10, Qt.Key_Up, Qt.Key_Escape);
        keyClick(Qt.Key_Comma, Qt.ControlModifier);
        verify(stage.desk.model.showsSettings && stage.desk.model.isAdvanced);
    }

    function test_closing_is_told_and_decided_elsewhere() {
        closes.target = shown;
        closes.clear();
        keyClick(Qt.Key_W, Qt.ControlModifier);
        compare(closes.count, 1);
        verify(shown.visible);
        // A sheet leaves the window its own keys, and nothing of the page.
        stage.fail("The disk is full.");
        mouseClick(shown.contentItem, shown.width - 22, 22);
        compare(closes.count, 2);
        mouseClick(shown.contentItem, shown.width - 90, 22);
        compare(stage.desk.model.showsSettings, false);
    }

    function test_a_window_at_rest_draws_nothing_until_a_level_comes_data() {
        return [{ tag: "simple", advanced: false }, { tag: "advanced", advanced: true }];
    }

    function test_a_window_at_rest_draws_nothing_until_a_level_comes(data) {
        stage.desk.model.isAdvanced = data.advanced;
        frames.target = shown;
        tryVerify(() => {
            frames.clear();
            wait(400);
            return frames.count === 0;
        }, 5000, "the window comes to rest");
        stage.hear(-12);
        tryVerify(() => frames.count > 0);
        // What came while nobody could see it is there afterwards, and then all is at rest again.
        shown.hide();
        stage.hear(-60);
        frames.clear();
        wait(200);
        compare(frames.count, 0, "hidden");
        shown.show();
        tryVerify(() => frames.count > 0);
    }

    SignalSpy {
        id: frames

        signalName: "frameSwapped"
    }

    SignalSpy {
        id: closes

        signalName: "closeWanted"
    }
}
