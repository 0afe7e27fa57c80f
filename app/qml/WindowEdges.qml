// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The edges of a window without a frame: six points all around that make it larger and smaller.
Item {
    component Edge: MouseArea {
        required property int side

        cursorShape: side === Qt.LeftEdge || side === Qt.RightEdge ? Qt.SizeHorCursor : side === Qt.TopEdge || side
            === Qt.BottomEdge ? Qt.SizeVerCursor : side === (Qt.TopEdge | Qt.LeftEdge) || side === (Qt.BottomEdge
            | Qt.RightEdge) ? Qt.SizeFDiagCursor : Qt.SizeBDiagCursor
        height: 6
        width: 6
        onPressed: Window.window.startSystemResize(side)
    }

    anchors.fill: parent

    Edge { anchors.left: parent.left; anchors.right: parent.right; side: Qt.TopEdge }
    Edge { anchors.bottom: parent.bottom; anchors.left: parent.left; anchors.right: parent.right; side: Qt.BottomEdge }
    Edge { anchors.bottom: parent.bottom; anchors.top: parent.top; side: Qt.LeftEdge }
    Edge { anchors.bottom: parent.bottom; anchors.right: parent.right; anchors.top: parent.top; side: Qt.RightEdge }
    Edge { height: 10; side: Qt.TopEdge | Qt.LeftEdge; width: 10 }
    Edge { anchors.right: parent.right; height: 10; side: Qt.TopEdge | Qt.RightEdge; width: 10 }
    Edge { anchors.bottom: parent.bottom; height: 10; side: Qt.BottomEdge | Qt.LeftEdge; width: 10 }
    Edge {
        anchors.bottom: parent.bottom
        anchors.right: parent.right
        height: 10
        side: Qt.BottomEdge | Qt.RightEdge
        width: 10
    }
}
