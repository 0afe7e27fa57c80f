// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Engraved capitals that name a group of controls.
PaintedText {
    required property string label

    Accessible.name: label
    Accessible.role: Accessible.StaticText
    color: Theme.dim
    finish: PaintedText.Engraved
    pixelSize: Theme.legendSize
    text: label.toLocaleUpperCase()
    tracking: Theme.legendTracking
    weight: 600
}
