// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Where a window without a frame is taken hold of: it moves, and a double press makes it large and small again.
MouseArea {
    id: mover

    required property Window window
    required property bool framed
    property point from

    onDoubleClicked: mouse => {
        if (!framed && mouse.button === Qt.LeftButton)
            window.visibility = window.visibility === Window.Maximized ? Window.Windowed : Window.Maximized;
    }
    onPositionChanged: mouse => {
        const far = Math.abs(mouse.x - from.x) + Math.abs(mouse.y - from.y) > Qt.styleHints.startDragDistance;
        if (!framed && far && (mouse.buttons & Qt.LeftButton))
            window.startSystemMove();
    }
    onPressed: mouse => from = Qt.point(mouse.x, mouse.y)
}
