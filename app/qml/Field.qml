// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// One line of text to write, in a well. What was written is told when the field is left or Return is pressed.
Item {
    id: field

    required property string name
    property string placeholder
    property alias text: input.text
    property alias caretVisible: input.cursorVisible
    property bool ringed: input.activeFocus

    signal committed(string text)

    implicitHeight: 28
    implicitWidth: 150
    opacity: enabled ? 1 : 0.45

    Surface {
        anchors.fill: parent
        recipe: Surface.Well
    }

    Words {
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.dim
        text: field.placeholder
        visible: input.text === "" && !input.activeFocus
        x: 10
    }

    TextInput {
        id: input

        Accessible.name: field.name
        Accessible.role: Accessible.EditableText
        Keys.priority: Keys.AfterItem
        activeFocusOnTab: true
        anchors.fill: parent
        anchors.leftMargin: 10
        anchors.rightMargin: 10
        clip: true
        color: Theme.ink
        cursorDelegate: Rectangle {
            color: Theme.lime
            visible: (parent as TextInput)?.cursorVisible ?? false
            width: 2
        }
        font.family: Theme.family
        font.pixelSize: Theme.textSize
        font.weight: Font.Medium
        renderType: TextInput.NativeRendering
        selectByMouse: true
        selectedTextColor: Theme.ink
        selectionColor: Theme.selection
        verticalAlignment: TextInput.AlignVCenter
        // What a text has no use for, such as Left at its beginning, is meant for nothing around it.
        Keys.onPressed: event => event.accepted = [Qt.Key_Left, Qt.Key_Right, Qt.Key_Space].includes(event.key)
        onEditingFinished: field.committed(text)
    }

    Ring {
        innerRadius: 6
        shown: field.ringed
    }
}
