// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// What was checked before a take, one row a finding; a long list scrolls.
ScrollView {
    id: list

    lineOutside: 11
    /// Objects of `severity`, `title` and `advice`.
    required property var findings
    /// What stands there while there are none.
    required property string nothing

    Column {
        spacing: 12
        topPadding: 6
        width: list.width

        Repeater {
            model: list.findings

            CheckRow {
                required property var modelData

                advice: modelData.advice
                severity: modelData.severity
                title: modelData.title
                width: parent?.width ?? 0
            }
        }

        Words {
            color: Theme.soft
            text: list.nothing
            visible: list.findings.length === 0
            width: list.width
            wrapMode: Text.Wrap
        }
    }
}
