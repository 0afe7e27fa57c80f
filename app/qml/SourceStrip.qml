// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The source in a well, with what is known of it; its arrows are gone while it cannot be changed.
Pressable {
    id: strip

    property string source
    property string line
    property bool fixed

    enabled: !fixed
    implicitHeight: 46
    implicitWidth: 300
    name: line === "" ? source : source + ", " + line
    role: Accessible.ButtonMenu

    Surface {
        anchors.fill: parent
        recipe: Surface.Well
    }

    Words {
        color: strip.fixed ? Theme.fixedWord : Theme.ink
        elide: Text.ElideRight
        font.pixelSize: Theme.sourceSize
        font.weight: Font.DemiBold
        text: strip.source
        width: strip.width - 50
        x: 14
        y: strip.line === "" ? Math.round((strip.height - height) / 2) : 5
    }

    Words {
        color: Theme.dim
        elide: Text.ElideRight
        font.pixelSize: Theme.lineSize
        text: strip.line
        visible: text !== ""
        width: strip.width - 50
        x: 14
        y: 24
    }

    Symbol {
        anchors.right: parent.right
        anchors.rightMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        color: strip.glimmer > 0 ? Theme.lime : Theme.ink
        shape: Symbol.UpDown
        visible: !strip.fixed
    }

    Ring {
        innerRadius: 6
        shown: strip.ringed
    }
}
