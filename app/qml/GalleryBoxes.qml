// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// What is larger in the gallery: the source strip and its menu, sheets, a tooltip, the rows of a check.
Item {
    Legend { label: "Source menu, open"; x: 30; y: 344 }

    SourceStrip { line: "Picked automatically"; source: "DJM-900NXS2"; x: 30; y: 366 }

    Menu {
        current: 0
        entries: [
            { lens: true, lit: true, text: "DJM-900NXS2" },
            { lens: true, text: "Mixxx" },
            { lens: true, text: "USB Audio Interface" },
            { lens: true, text: "Internal Microphone" },
            { line: true },
            { text: "Detect Again" },
            { disabled: true, keys: "Ctrl+G", text: "Open the setup guide" }
        ]
        name: "Sources"
        width: 300
        x: 30
        y: 418
    }

    Legend { label: "Source strip, take running"; x: 30; y: 676 }

    SourceStrip { fixed: true; line: "Recording from this source"; source: "DJM-900NXS2"; x: 30; y: 698 }

    Legend { label: "Alert sheet"; x: 370; y: 344 }

    Sheet {
        height: 168
        text: "The take ended early: the disk that holds /media/booth is full. Everything up to 1:04:12 is saved."
        title: "Vantiro needs your attention"
        x: 370
        y: 366

        Key { ringed: true; text: "OK"; width: 96 }
    }

    Sheet {
        title: "Stop and save this take?"
        width: 400
        x: 370
        y: 552

        Key { text: "Keep Recording" }
        Key { lens: true; light: Lamp.Red; text: "Stop and Save" }
    }

    Legend { label: "Tooltip"; x: 370; y: 690 }

    ToolTip { text: "Your takes: the shape of each set, where it clipped, play and post"; x: 370; y: 714 }

    Legend { label: "Check rows"; x: 810; y: 790 }

    Column {
        spacing: 12
        x: 810
        y: 814

        CheckRow { severity: CheckRow.Ok; title: "Level good"; width: 390 }
        CheckRow {
            advice: "Raise the master on the controller or mixer until one track peaks between −10 and −6 dB."
            severity: CheckRow.Warning
            title: "Low: peak −19 dB"
            width: 390
        }
        CheckRow {
            advice: "Check the cable, or pick another source."
            severity: CheckRow.Blocker
            title: "USB Audio Interface is not connected"
            width: 390
        }
    }

    Legend { label: "Disabled"; x: 810; y: 344 }

    Column {
        enabled: false
        spacing: 16
        x: 810
        y: 366

        Picker { choices: ["CAF", "WAV"]; name: "Format" }
        Stepper { name: "Channels"; text: "1–2" }
        Field { name: "DJ name"; text: "DJ Nightbus" }
        Scrubber { fraction: 0.3 }
    }

    Legend { label: "Focus"; x: 810; y: 540 }

    Column {
        spacing: 20
        x: 814
        y: 566

        Picker { choices: ["CAF", "WAV"]; name: "Format"; ringed: true }
        Stepper { name: "Channels"; ringed: true; text: "1–2" }
    }
}
