// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The focus of the keyboard around its parent, four points outside.
FocusRing {
    required property bool shown
    property real innerRadius: Theme.keyRadius

    anchors.fill: parent
    anchors.margins: -4
    radius: innerRadius + 4
    visible: shown
}
