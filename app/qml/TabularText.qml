// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Figures that stand still while they run.
PaintedText {
    Accessible.name: text
    Accessible.role: Accessible.StaticText
    digits: PaintedText.Tabular
    weight: 500
}
