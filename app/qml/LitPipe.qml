// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A light pipe that goes on quickly and off slowly.
Lamp {
    id: pipe

    required property bool lit

    height: 4
    level: lit ? 1 : 0

    Behavior on level {
        NumberAnimation {
            duration: pipe.lit ? Theme.lampOn : Theme.lampOff
        }
    }
}
