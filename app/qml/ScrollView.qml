// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Shows a part of its one child, which is higher than itself, with a line beside it that says which. What has the keyboard's focus comes
/// into view.
Item {
    id: view

    default property alias shown: flick.flickableData
    property alias contentY: flick.contentY
    readonly property bool scrolls: flick.contentHeight > flick.height + 0.5
    /// How far beyond the right edge the line stands.
    property int lineOutside: 0
    /// How far it ends from the upper and the lower edge.
    property int lineInset: 0
    readonly property Item focused: Window.activeFocusItem

    onFocusedChanged: follow()

    function follow() {
        let item = focused;
        while (item && item !== flick.contentItem)
            item = item.parent;
        if (item)
            reveal(focused);
    }

    /// Scrolls as little as brings that item into view.
    function reveal(item: Item) {
        const top = item.mapToItem(flick.contentItem, 0, 0).y;
        const lowest = Math.max(0, flick.contentHeight - flick.height);
        const wanted = Math.max(top + item.height + 8 - flick.height, Math.min(flick.contentY, top - 8));
        flick.contentY = Math.max(0, Math.min(wanted, lowest));
    }

    Flickable {
        id: flick

        anchors.fill: parent
        boundsBehavior: Flickable.StopAtBounds
        clip: view.scrolls
        contentHeight: contentItem.children[0]?.height ?? 0
        contentWidth: width
        interactive: view.scrolls
    }

    ScrollLine {
        anchors.bottom: parent.bottom
        anchors.bottomMargin: view.lineInset
        anchors.right: parent.right
        anchors.rightMargin: -view.lineOutside
        anchors.top: parent.top
        anchors.topMargin: view.lineInset
        of: flick
    }
}
