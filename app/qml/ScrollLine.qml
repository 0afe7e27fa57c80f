// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Shows which part of something long is in view. It is no control: wheel, touch and the keyboard's focus scroll.
Rectangle {
    id: line

    required property Flickable of
    readonly property real share: of.visibleArea.heightRatio
    readonly property bool needed: share < 0.9995

    color: Theme.well
    radius: 3
    visible: needed
    width: 6

    Rectangle {
        color: Theme.bar
        height: Math.max(24, Math.round(line.height * line.share))
        radius: 3
        width: 6
        y: Math.round((line.height - height) * line.of.visibleArea.yPosition / Math.max(0.0005, 1 - line.share))
    }
}
