// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A round lens that goes on quickly and off slowly.
Lamp {
    id: lens

    required property bool lit

    form: Lamp.Lens
    height: 8
    level: lit ? 1 : 0
    width: 8

    Behavior on level {
        NumberAnimation {
            duration: lens.lit ? Theme.lampOn : Theme.lampOff
        }
    }
}
