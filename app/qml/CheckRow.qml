// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// One thing that was looked at before a take: its symbol, what was found, and what to do about it.
Row {
    id: row

    enum Severity {
        Ok,
        Warning,
        Blocker
    }

    required property int severity
    required property string title
    property string advice
    readonly property color color: [Theme.lime, Theme.amber, Theme.red][severity]
    /// What its colour says, for who does not see it.
    readonly property string word: [qsTr("In order."), qsTr("Warning."), qsTr("Problem.")][severity]

    Accessible.description: advice === "" ? word : word + " " + advice
    Accessible.name: title
    Accessible.role: Accessible.StaticText
    leftPadding: -1
    spacing: 9

    Symbol {
        color: row.color
        shape: [Symbol.Check, Symbol.Warning, Symbol.Cross][row.severity]
        y: 1
    }

    Column {
        spacing: 2
        width: row.width - 25

        Words {
            Accessible.ignored: true
            color: row.severity === CheckRow.Ok ? Theme.ink : row.color
            text: row.title
            width: parent.width
            wrapMode: Text.Wrap
        }

        Words {
            Accessible.ignored: true
            color: Theme.soft
            font.pixelSize: Theme.legendSize
            lineHeight: 14
            lineHeightMode: Text.FixedHeight
            text: row.advice
            visible: text !== ""
            width: parent.width
            wrapMode: Text.Wrap
        }
    }
}
