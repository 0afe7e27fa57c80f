// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A key: small with engraved capitals, with words, or the big one with its light pipe.
Pressable {
    id: key

    enum Size {
        Small,
        Words,
        Foot,
        Big
    }

    property int size: Key.Words
    property string text
    property int symbol: Symbol.None
    property color symbolColor: Theme.ink
    /// A lens in front of the words, lit.
    property bool lens
    property int light: Lamp.Lime
    /// The pipe of a big key or of one at the window's foot; on a small one it comes with the light.
    property bool lit
    property int pipeWidth: big ? 112 : foot ? 56 : 16

    readonly property bool big: size === Key.Big
    readonly property bool foot: size === Key.Foot
    readonly property bool small: size === Key.Small
    /// A symbol has some air at its sides, which is none between a key's edge and what is seen.
    readonly property bool airy: size === Key.Words && symbol !== Symbol.None && text !== ""
    readonly property color legendColor: !enabled ? Theme.off : small && lit ? Theme.lime : Theme.ink

    implicitHeight: big ? 56 : foot ? 38 : small ? 24 : 32
    implicitWidth: words.implicitWidth + (big ? 48 : small ? 18 : airy ? 25 : 28)
    name: text

    Surface {
        anchors.fill: parent
        disabled: !key.enabled
        hover: key.glimmer
        press: key.press
        recipe: key.big ? Surface.BigKey : Surface.Key
    }

    Row {
        id: words

        anchors.centerIn: parent
        anchors.horizontalCenterOffset: key.airy ? -2 : 0
        anchors.verticalCenterOffset: Math.round(key.press) - (key.big ? 5 : key.foot ? 3 : 0)
        spacing: key.lens ? 9 : key.big ? 7 : 6

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            color: key.enabled ? key.symbolColor : Theme.off
            shape: key.symbol
            visible: key.symbol !== Symbol.None
        }

        LitLens {
            anchors.verticalCenter: parent.verticalCenter
            light: key.light
            lit: key.enabled
            visible: key.lens
        }

        Words {
            anchors.verticalCenter: parent.verticalCenter
            color: key.legendColor
            font.letterSpacing: key.big ? 0.6 : key.small ? Theme.legendTracking : 0.2
            font.pixelSize: key.big ? Theme.bigKeySize : key.foot ? Theme.rowSize : key.small ? Theme.legendSize : key.height < 28 ? Theme.helpSize : Theme.textSize
            font.weight: Font.DemiBold
            rightPadding: key.small ? -Theme.legendTracking : 0
            text: key.text
            visible: text !== ""
        }
    }

    LitPipe {
        anchors.bottom: parent.bottom
        anchors.bottomMargin: (key.big ? 10 : key.foot ? 6 : 2) - Math.round(key.press)
        anchors.horizontalCenter: parent.horizontalCenter
        height: key.big ? 4 : key.foot ? 3 : 2
        light: key.light
        lit: key.lit && key.enabled
        visible: key.big || key.foot || (key.small && level > 0)
        width: key.pipeWidth
    }

    Ring {
        innerRadius: key.big ? Theme.bigKeyRadius : Theme.keyRadius
        shown: key.ringed
    }
}
