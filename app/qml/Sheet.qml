// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// What the window has to say or to ask, with its keys at the lower right. The first key is the way out.
Surface {
    id: sheet

    required property string title
    property string text
    /// The title is the product's name, engraved.
    property bool engraved
    default property alias keys: row.data

    Accessible.description: text
    Accessible.name: title
    Accessible.role: Accessible.AlertMessage
    implicitHeight: 20 + words.implicitHeight + (text === "" ? 18 : 26) + row.implicitHeight + 20
    implicitWidth: 400
    recipe: Surface.Sheet

    Component.onCompleted: chain()

    /// The keyboard begins at the first key.
    function attend() {
        row.children[0].forceActiveFocus(Qt.TabFocusReason);
    }

    /// Tab goes from the last key to the first.
    function chain() {
        for (let place = 0; place < row.children.length; ++place)
            row.children[place].KeyNavigation.tab = row.children[(place + 1) % row.children.length];
    }

    Column {
        id: words

        spacing: 8
        width: parent.width - 44
        x: 22
        y: 20

        Words {
            font.pixelSize: Theme.sheetSize
            font.weight: Font.DemiBold
            text: sheet.title
            visible: !sheet.engraved
            width: parent.width
            wrapMode: Text.Wrap
        }

        Wordmark {
            Accessible.ignored: true
            visible: sheet.engraved
        }

        Words {
            color: Theme.body
            lineHeight: 19
            lineHeightMode: Text.FixedHeight
            text: sheet.text
            visible: text !== ""
            width: parent.width
            wrapMode: Text.Wrap
        }
    }

    Row {
        id: row

        anchors.bottom: parent.bottom
        anchors.bottomMargin: 20
        anchors.right: parent.right
        anchors.rightMargin: 22
        spacing: 12
    }
}
