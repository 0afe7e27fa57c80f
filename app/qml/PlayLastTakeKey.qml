// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Puts the newest take on the deck, or says why it cannot.
Key {
    required property Desk desk

    enabled: desk.playLastEnabled
    height: 26
    hint: desk.playLastHint
    symbol: Symbol.Play
    text: desk.playLastText
    onTriggered: desk.playLastTake()
}
