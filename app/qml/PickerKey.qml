// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// One key of a picker: in, with its pipe lit, while it is the chosen one.
Pressable {
    id: pickerKey

    required property int index
    /// Its `words` and its `picker`.
    required property var modelData
    readonly property var picker: modelData.picker
    readonly property bool checked: index === picker.current

    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: if (pickerKey.enabled) pickerKey.triggered()
    implicitHeight: 26
    implicitWidth: Math.max(52, Math.ceil(words.implicitWidth) + 20)
    name: modelData.words
    role: Accessible.RadioButton
    stops: false

    onTriggered: picker.choose(index)

    Surface {
        anchors.fill: parent
        hover: pickerKey.checked ? 0 : pickerKey.glimmer
        press: pickerKey.checked ? 1 : pickerKey.press
        recipe: Surface.PickerKey
    }

    Words {
        id: words

        anchors.centerIn: parent
        anchors.verticalCenterOffset: -1
        color: pickerKey.checked || (pickerKey.hovered && pickerKey.enabled) ? Theme.ink : Theme.soft
        font.pixelSize: Theme.helpSize
        font.weight: Font.DemiBold
        text: pickerKey.name
    }

    LitPipe {
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 3
        anchors.horizontalCenter: parent.horizontalCenter
        height: 2
        lit: pickerKey.checked
        visible: level > 0
        width: 18
    }
}
