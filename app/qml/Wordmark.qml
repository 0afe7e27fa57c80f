// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The product's name, engraved.
PaintedText {
    finish: PaintedText.Engraved
    pixelSize: Theme.textSize
    text: "VANTIRO"
    tracking: Theme.markTracking
    weight: 700
}
