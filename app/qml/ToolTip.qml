// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A few words about the control under the pointer; below its target, or above it where there is no room. Where
/// nobody shows it for a target it stands where it is put.
Surface {
    id: toolTip

    property string text
    readonly property Item ground: Window.contentItem

    implicitHeight: words.implicitHeight + 10
    implicitWidth: words.width + 18
    recipe: Surface.ToolTip
    z: 1000

    function show(target: Item, words: string) {
        text = words;
        parent = target.Window.contentItem;
        const below = target.mapToItem(ground, 0, target.height + 6);
        x = Math.round(Math.max(8, Math.min(below.x, ground.width - implicitWidth - 8)));
        y = Math.round(below.y + implicitHeight < ground.height - 8 ? below.y : below.y - target.height - implicitHeight - 12);
    }

    Words {
        id: words

        anchors.centerIn: parent
        font.pixelSize: Theme.helpSize
        text: toolTip.text
        width: Math.min(implicitWidth, (toolTip.ground?.width ?? 500) - 34)
        wrapMode: Text.Wrap
    }
}
