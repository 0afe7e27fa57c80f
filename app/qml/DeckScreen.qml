// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The deck with what belongs to it: the source, the big key and the last take below; in the advanced form the level
/// strip above and the inspector beside it. The rows keep their heights, deck and inspector share the rest.
Item {
    id: screen

    required property Desk desk
    required property bool advanced

    /// The list of sources is wanted, hanging from that item.
    signal sourcesWanted(Item from)
    /// The same of outputs.
    signal outputsWanted(Item from)

    readonly property int inspectorWidth: 320 + Math.min(160, Math.max(0, Math.round((width - 920) / 4)))
    readonly property int column: advanced ? width - inspectorWidth - 3 * Theme.margin : width - 2 * Theme.margin

    Surface {
        height: 64
        recipe: Surface.Well
        visible: screen.advanced
        width: screen.column
        x: Theme.margin

        WaveformStrip {
            anchors.fill: parent
            anchors.margins: 6
            model: screen.desk.model
        }
    }

    DeckRing {
        id: deck

        height: screen.height - y - (screen.advanced ? 138 : 170)
        hovered: glass.hovered
        model: screen.desk.model
        moving: screen.desk.model.deckMotion
        pressScale: glass.give
        reducedMotion: Theme.reducedMotion
        takeNumber: screen.desk.takeNumber
        width: screen.column
        x: Theme.margin
        y: screen.advanced ? 74 : 0

        DeckGlass {
            id: glass

            desk: screen.desk
            height: deck.glass.height
            width: deck.glass.width
            x: deck.glass.x
            y: deck.glass.y
        }
    }

    SourceStrip {
        id: source

        fixed: screen.desk.sourceFixed
        hint: screen.desk.sourceHint
        line: screen.desk.sourceLine
        source: screen.desk.model.sourceName
        visible: !screen.advanced
        width: screen.column
        x: Theme.margin
        y: screen.height - 160
        onTriggered: screen.sourcesWanted(source)
    }

    StartStopKey {
        desk: screen.desk
        width: screen.column
        x: Theme.margin
        y: screen.height - (screen.advanced ? 128 : 104)
    }

    PlaybackBar {
        id: playback

        desk: screen.desk
        visible: screen.desk.phase === Desk.Playing
        width: screen.column
        x: Theme.margin
        y: screen.height - (screen.advanced ? 53 : 38)
        onOutputsWanted: from => screen.outputsWanted(from)
    }

    PlayLastTakeKey {
        desk: screen.desk
        visible: !playback.visible
        x: Theme.margin + Math.round((screen.column - width) / 2)
        y: screen.height - (screen.advanced ? 52 : 37)
    }

    Inspector {
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.margin
        anchors.right: parent.right
        anchors.rightMargin: Theme.margin
        anchors.top: parent.top
        desk: screen.desk
        visible: screen.advanced
        width: screen.inspectorWidth
        onSourcesWanted: from => screen.sourcesWanted(from)
    }
}
