// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The keys of the gallery: big, small, with words.
Item {
    component BigKey: Key {
        lit: true
        pipeWidth: 72
        size: Key.Big
        symbol: Symbol.Record
        symbolColor: Theme.red
        text: "Record"
        width: 138
    }
    component SmallKey: Key {
        size: Key.Small
        text: "TAKES"
    }
    component PlayKey: Key {
        symbol: Symbol.Play
        text: "Play"
        width: 112
    }

    Legend { label: "Start / stop key"; x: 30; y: 24 }

    Row {
        spacing: 12
        x: 30
        y: 48

        GalleryCaption { caption: "rest"; BigKey {} }
        GalleryCaption { caption: "hover"; BigKey { hovered: true } }
        GalleryCaption { caption: "pressed"; BigKey { down: true } }
        GalleryCaption { caption: "focus"; BigKey { ringed: true } }
        GalleryCaption { caption: "disabled"; BigKey { enabled: false } }
        GalleryCaption {
            caption: "lit: a take runs"
            BigKey { light: Lamp.Red; symbol: Symbol.Stop; symbolColor: Theme.ink; text: "Stop" }
        }
        GalleryCaption {
            caption: "lit: no source"
            BigKey { light: Lamp.Amber; symbol: Symbol.None; text: "Open setup" }
        }
        GalleryCaption { caption: "out: starting"; BigKey { enabled: false; lit: false } }
    }

    Legend { label: "Small engraved keys"; x: 30; y: 152 }

    Row {
        spacing: 36
        x: 42
        y: 176

        GalleryCaption { caption: "rest"; SmallKey {} }
        GalleryCaption { caption: "hover"; SmallKey { hovered: true } }
        GalleryCaption { caption: "pressed"; SmallKey { down: true } }
        GalleryCaption { caption: "lit"; SmallKey { lit: true } }
        GalleryCaption { caption: "focus"; SmallKey { ringed: true } }
        GalleryCaption { caption: "disabled"; SmallKey { enabled: false } }
    }

    Legend { label: "Keys with words"; x: 580; y: 152 }

    Row {
        spacing: 12
        x: 580
        y: 172

        GalleryCaption { caption: "rest"; PlayKey {} }
        GalleryCaption { caption: "hover"; PlayKey { hovered: true } }
        GalleryCaption { caption: "pressed"; PlayKey { down: true } }
        GalleryCaption { caption: "focus"; PlayKey { ringed: true } }
        GalleryCaption { caption: "disabled"; PlayKey { enabled: false } }
    }
}
