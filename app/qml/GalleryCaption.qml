// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The name of a state under what shows it, which keeps its own size.
Item {
    id: holder

    required property string caption
    property int gap: 9
    default property alias shown: middle.data

    implicitHeight: middle.height + gap + words.height
    implicitWidth: Math.max(middle.width, Math.ceil(words.implicitWidth))

    Item {
        id: middle

        anchors.horizontalCenter: parent.horizontalCenter
        height: childrenRect.height
        width: childrenRect.width
    }

    Words {
        id: words

        anchors.horizontalCenter: parent.horizontalCenter
        anchors.top: middle.bottom
        anchors.topMargin: holder.gap
        color: Theme.soft
        font.pixelSize: Theme.lineSize
        text: holder.caption
    }
}
