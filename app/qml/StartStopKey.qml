// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The big key: it does what the deck's centre does, and its pipe tells the deck's state from across the room.
Key {
    id: key

    required property Desk desk
    /// A press during a take may ask first.
    property bool asks: true
    readonly property bool runs: desk.phase === Desk.Recording || desk.phase === Desk.Playing

    enabled: desk.keyEnabled
    hint: desk.keyHint
    light: desk.phase === Desk.Recording ? Lamp.Red : desk.phase === Desk.NoSource ? Lamp.Amber : Lamp.Lime
    lit: desk.phase !== Desk.Starting
    size: Key.Big
    symbol: runs ? Symbol.Stop : desk.phase === Desk.NoSource ? Symbol.None : Symbol.Record
    symbolColor: runs ? Theme.ink : Theme.red
    text: desk.keyText
    onTriggered: asks ? desk.pressKey() : desk.pressPanelKey()
}
