// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import QtTest
import Vantiro

Item {
    id: ground

    height: 400
    width: 400

    Key { id: record; text: "Record" }
    Toggle { id: toggle; name: "Grain"; y: 50; onToggled: on => checked = on }
    Picker { id: picker; choices: ["Off", "AAC", "WAV"]; name: "Copy"; y: 100; onChosen: index => current = index }
    Stepper { id: stepper; name: "Channels"; y: 150 }
    Scrubber { id: scrubber; fraction: 0.5; width: 200; y: 200; onSeek: place => ground.place = place }
    Menu {
        id: menu
        entries: [{ text: "One" }, { line: true }, { disabled: true, text: "Two" }, { text: "Three" }]
        name: "Numbers"
        y: 240
    }
    PopupMenu { id: popup; name: "Letters" }
    Field { id: field; name: "DJ name"; x: 200 }

    property real place: -1

    SignalSpy { id: presses; signalName: "triggered"; target: record }
    SignalSpy { id: steps; signalName: "stepped"; target: stepper }
    SignalSpy { id: choices; signalName: "chosen"; target: menu }
    SignalSpy { id: letters; signalName: "chosen"; target: popup }
    SignalSpy { id: seeks; signalName: "seek"; target: scrubber }
    SignalSpy { id: words; signalName: "committed"; target: field }

    TestCase {
        name: "Controls"
        when: windowShown

        function init() {
            for (const spy of [presses, steps, choices, letters, words])
                spy.clear();
            for (const control of [record, toggle, picker, stepper, scrubber, field])
                control.enabled = true;
            ground.place = -1;
            ground.forceActiveFocus();
        }

        function test_a_key_is_pressed_by_every_way_in_and_by_none_while_disabled_data() {
            return [{
                    "tag": "mouse",
                    "press": () => mouseClick(record)
                }, {
                    "tag": "Space",
                    "press": () => keyClick(Qt.Key_Space)
                }, {
                    "tag": "Return",
                    "press": () => keyClick(Qt.Key_Return)
                }, {
                    "tag": "screen reader",
                    "press": () => reader.act(record, "Press")
                }];
        }

        function test_a_key_is_pressed_by_every_way_in_and_by_none_while_disabled(data) {
            record.forceActiveFocus();
            data.press();
            compare(presses.count, 1);
            record.enabled = false;
            data.press();
            compare(presses.count, 1);
            compare(reader.name(record), "Record");
        }

        function test_a_click_leaves_the_focus_where_it_is_and_Tab_moves_it() {
            mouseClick(record);
            verify(!record.activeFocus);
            record.forceActiveFocus();
            verify(record.ringed);
            keyClick(Qt.Key_Tab);
            verify(toggle.activeFocus);
        }

        function test_a_press_that_leaves_the_key_is_none() {
            mousePress(record);
            verify(record.down);
            mouseMove(ground, 300, 300);
            mouseRelease(ground, 300, 300);
            compare(presses.count, 0);
            record.forceActiveFocus();
            keyPress(Qt.Key_Space);
            toggle.forceActiveFocus();
            keyRelease(Qt.Key_Space);
            compare(presses.count, 0);
            compare(toggle.checked, false);
        }

        function test_only_the_key_that_was_pressed_triggers_and_only_alone() {
            record.forceActiveFocus();
            keyClick(Qt.Key_Return, Qt.ControlModifier);
            keyPress(Qt.Key_Space);
            keyClick(Qt.Key_Return);
            compare(presses.count, 0);
            keyRelease(Qt.Key_Space);
            keyClick(Qt.Key_Enter, Qt.KeypadModifier);
            compare(presses.count, 2);
        }

        function test_a_toggle_tells_a_screen_reader_what_it_is() {
            verify(reader.act(toggle, "Toggle"));
            verify(reader.isChecked(toggle));
            mouseClick(toggle);
            verify(!reader.isChecked(toggle));
        }

        function test_a_picker_is_moved_by_arrows_as_far_as_it_goes_and_by_a_click() {
            picker.current = 0;
            picker.forceActiveFocus();
            const places = [Qt.Key_Left, Qt.Key_Right, Qt.Key_Right, Qt.Key_Right].map(key => {
                keyClick(key);
                return picker.current;
            });
            compare(places, [0, 1, 2, 2]);
            mouseClick(picker, 20, 15);
            compare(picker.current, 0);
            picker.enabled = false;
            mouseClick(picker, picker.width - 20, 15);
            compare(picker.current, 0);
        }

        function test_a_stepper_steps_both_ways_until_its_end() {
            stepper.canDecrease = false;
            stepper.forceActiveFocus();
            keyClick(Qt.Key_Left);
            mouseClick(stepper, 10, 14);
            compare(steps.count, 0);
            keyClick(Qt.Key_Right);
            mouseClick(stepper, 105, 14);
            verify(reader.act(stepper, "Increase"));
            compare(steps.count, 3);
            compare(steps.signalArguments[2][0], 1);
        }

        function test_a_scrubber_seeks_to_where_it_is_asked_data() {
            return [
                { "tag": "a click", "seek": () => mouseClick(scrubber, 50, 14), "place": 0.25 },
                { "tag": "a drag beyond the end", "seek": () => mouseDrag(scrubber, 100, 14, 400, 0), "place": 1 },
                { "tag": "an arrow", "seek": () => keyClick(Qt.Key_Left), "place": 0.49 },
                { "tag": "an arrow with Shift", "seek": () => keyClick(Qt.Key_Right, Qt.ShiftModifier), "place": 0.62 },
                { "tag": "a screen reader", "seek": () => reader.setValue(scrubber, 80), "place": 0.8 },
            ];
        }

        function test_a_scrubber_seeks_to_where_it_is_asked(data) {
            scrubber.forceActiveFocus();
            data.seek();
            fuzzyCompare(ground.place, data.place, 0.001);
            compare(reader.value(scrubber), 50);
        }

        function test_a_dragged_scrubber_follows_the_hand_at_once_and_asks_ten_times_a_second() {
            seeks.clear();
            const begun = Date.now();
            mousePress(scrubber, 20, 14);
            for (let x = 21; x <= 60; ++x)
                mouseMove(scrubber, x, 14);
            compare(scrubber.place, 0.3);
            verify(seeks.count <= 2 + (Date.now() - begun) / 100);
            tryVerify(() => place === 0.3);
            mouseMove(scrubber, 120, 14);
            mouseRelease(scrubber, 120, 14);
            compare(place, 0.6);
            compare(scrubber.place, 0.5);
        }

        function test_a_menu_passes_over_lines_and_what_is_disabled() {
            menu.forceActiveFocus();
            const places = [Qt.Key_Down, Qt.Key_Down, Qt.Key_Down, Qt.Key_Up].map(key => {
                keyClick(key);
                return menu.current;
            });
            compare(places, [0, 3, 3, 0]);
            keyClick(Qt.Key_Return);
            mouseClick(menu, 30, 5 + 34 + 11 + 17);
            mouseClick(menu, 30, 5 + 34 + 11 + 34 + 17);
            compare(choices.signalArguments.map(one => one[0]), [0, 3]);
        }

        function test_a_popup_keeps_what_it_opened_with_and_Tab_leaves_it() {
            popup.entries = [{ id: "a", text: "A" }, { id: "b", text: "B" }];
            popup.open(Qt.rect(0, 0, 0, 0), 1);
            popup.entries = [{ id: "new", text: "New" }, { id: "a", text: "A" }, { id: "b", text: "B" }];
            keyClick(Qt.Key_Return);
            compare(letters.signalArguments.map(one => one[0]), ["b"]);
            popup.open(Qt.rect(0, 0, 0, 0), -1);
            keyClick(Qt.Key_Tab);
            verify(!popup.visible);
        }

        function test_a_field_tells_what_was_written_when_it_is_left() {
            mouseClick(field);
            for (const letter of "abc")
                keyClick(letter);
            keyClick(Qt.Key_Return);
            compare(words.signalArguments[0][0], "abc");
        }

        function test_without_motion_a_key_is_down_at_once() {
            Theme.reducedMotion = true;
            mousePress(record);
            compare(record.press, 1);
            mouseRelease(record);
            compare(record.press, 0);
            Theme.reducedMotion = false;
        }
    }
}
