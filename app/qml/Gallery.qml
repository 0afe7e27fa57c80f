// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// Every control in every state it has, for the eye: no part of the product's menus.
Faceplate {
    id: gallery

    implicitHeight: 1010
    implicitWidth: 1240

    GalleryKeys {
        anchors.fill: parent
    }

    GallerySmall {
        anchors.fill: parent
    }

    GalleryBoxes {
        anchors.fill: parent
    }
}
