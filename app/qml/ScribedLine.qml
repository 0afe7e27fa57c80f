// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A line scratched between two rows: a dark groove and the light on its lower edge.
Column {
    id: scribed

    Rectangle {
        color: Theme.scribeDark
        height: 1
        width: scribed.width
    }

    Rectangle {
        color: Theme.scribeLight
        height: 1
        width: scribed.width
    }
}
