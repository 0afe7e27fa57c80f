// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// What the deck does not show: the level on a scale, the source and its channels, what was checked, and the figures of
/// the take.
Surface {
    id: inspector

    required property Desk desk
    readonly property int inner: width - 32

    signal sourcesWanted(Item from)

    recipe: Surface.Plate

    Legend { label: qsTr("Level"); x: 16; y: 12 }

    MeterView {
        compact: false
        height: 74
        model: inspector.desk.model
        segments: 64
        width: inspector.inner
        x: 16
        y: 32
    }

    Legend { label: qsTr("Source"); x: 16; y: 116 }

    SourceStrip {
        id: source

        fixed: inspector.desk.sourceFixed
        hint: inspector.desk.sourceHint
        line: inspector.desk.sourceLine
        source: inspector.desk.model.sourceName
        width: inspector.inner
        x: 16
        y: 134
        onTriggered: inspector.sourcesWanted(source)
    }

    Key {
        enabled: !inspector.desk.sourceFixed && !inspector.desk.model.detecting
        height: 26
        text: inspector.desk.detectText
        x: 16
        y: 191
        onTriggered: inspector.desk.detectAgain()
    }

    Row {
        anchors.right: parent.right
        anchors.rightMargin: 16
        spacing: 9
        visible: inspector.desk.hasChannels
        y: 190

        Words {
            Accessible.ignored: true
            anchors.verticalCenter: parent.verticalCenter
            color: channels.enabled ? Theme.ink : Theme.off
            font.pixelSize: Theme.helpSize
            text: channels.name
        }

        Stepper {
            id: channels

            canDecrease: inspector.desk.canLowerChannels
            canIncrease: inspector.desk.canRaiseChannels
            enabled: !inspector.desk.sourceFixed
            name: qsTr("Channels")
            text: inspector.desk.channels
            onStepped: direction => inspector.desk.stepChannels(direction)
        }
    }

    ScribedLine { width: inspector.inner; x: 16; y: 231 }

    Legend { label: qsTr("Check"); x: 16; y: 243 }

    PreflightList {
        findings: inspector.desk.findings
        height: figures.y - y - 12
        nothing: inspector.desk.noFindings
        width: inspector.inner
        x: 16
        y: 261
    }

    ScribedLine { visible: figures.visible; width: inspector.inner; x: 16; y: figures.y - 9 }

    FigureTable {
        id: figures

        anchors.bottom: parent.bottom
        anchors.bottomMargin: 8
        figures: inspector.desk.figures
        visible: inspector.desk.figures.length > 0
        width: inspector.inner
        x: 16
    }
}
