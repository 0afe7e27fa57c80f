// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// A text in the window's font, flat. What was said by others is shown as it is, never as markup.
Text {
    color: Theme.ink
    font.family: Theme.family
    font.pixelSize: Theme.textSize
    font.weight: Font.Medium
    renderType: Text.NativeRendering
    textFormat: Text.PlainText
}
