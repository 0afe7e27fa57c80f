// SPDX-License-Identifier: GPL-3.0-or-later
import QtQuick
import Vantiro

/// The small controls of the gallery: toggles, pickers, steppers, fields, scrubbers, lamps, symbols, type.
Item {
    component Channels: Stepper {
        name: "Channels"
        text: "9–10"
    }

    Legend { label: "Toggle"; x: 30; y: 246 }

    Row {
        spacing: 24
        x: 34
        y: 270

        GalleryCaption { caption: "on"; Toggle { checked: true; name: "on" } }
        GalleryCaption { caption: "off"; Toggle { name: "off" } }
        GalleryCaption { caption: "hover"; Toggle { checked: true; hovered: true; name: "hover" } }
        GalleryCaption { caption: "focus"; Toggle { checked: true; name: "focus"; ringed: true } }
        GalleryCaption { caption: "disabled"; Toggle { checked: true; enabled: false; name: "disabled" } }
    }

    Legend { label: "Picker"; x: 400; y: 246 }

    GalleryCaption {
        caption: "AAC chosen"
        x: 400
        y: 268

        Picker { id: copies; choices: ["Off", "AAC", "WAV", "FLAC"]; current: 1; name: "Copy"; onChosen: index => current = index }
    }

    Legend { label: "Stepper"; x: 680; y: 246 }

    GalleryCaption { caption: "channels"; x: 680; y: 268; Channels { increaseKey.hovered: true } }
    GalleryCaption { caption: "at its end"; x: 810; y: 268; Channels { canDecrease: false; text: "1–2" } }

    Legend { label: "Text field"; x: 950; y: 246 }

    GalleryCaption { caption: "empty"; x: 950; y: 268; Field { name: "DJ name"; placeholder: "None"; width: 118 } }
    GalleryCaption {
        caption: "focus"
        x: 1082
        y: 268
        Field { caretVisible: true; name: "DJ name"; ringed: true; text: "DJ Nightbus"; width: 118 }
    }

    Legend { label: "Scrubber"; x: 30; y: 770 }

    GalleryCaption { caption: "rest"; gap: 0; x: 30; y: 789; Scrubber { fraction: 0.417 } }
    GalleryCaption { caption: "drag, focus"; gap: 3; x: 30; y: 837; Scrubber { dragged: true; fraction: 0.66; ringed: true } }

    Legend { label: "Lamps"; x: 810; y: 700 }

    Row {
        spacing: 18
        x: 812
        y: 724

        GalleryCaption { caption: "out"; Lamp { form: Lamp.Lens; height: 10; width: 10 } }
        GalleryCaption { caption: "ready"; Lamp { form: Lamp.Lens; height: 10; level: 1; width: 10 } }
        GalleryCaption { caption: "warns"; Lamp { form: Lamp.Lens; height: 10; level: 1; light: Lamp.Amber; width: 10 } }
        GalleryCaption { caption: "records"; Lamp { form: Lamp.Lens; height: 10; level: 1; light: Lamp.Red; width: 10 } }
        GalleryCaption { caption: "out"; gap: 16; Lamp { height: 3; width: 34; y: 3 } }
        GalleryCaption { caption: "lit"; gap: 16; Lamp { height: 3; level: 1; width: 34; y: 3 } }
        GalleryCaption { caption: "lit"; gap: 16; Lamp { height: 3; level: 1; light: Lamp.Amber; width: 34; y: 3 } }
        GalleryCaption { caption: "lit"; gap: 16; Lamp { height: 3; level: 1; light: Lamp.Red; width: 34; y: 3 } }
    }

    Legend { label: "Symbols"; x: 370; y: 770 }

    Row {
        spacing: 12
        x: 370
        y: 794

        Repeater {
            model: [Symbol.Record, Symbol.Stop, Symbol.Play, Symbol.Pause, Symbol.UpDown, Symbol.More, Symbol.Share,
                Symbol.Check, Symbol.Warning, Symbol.Cross, Symbol.Plus, Symbol.Minus, Symbol.Minimise, Symbol.Close]

            Symbol {
                required property int modelData

                shape: modelData
            }
        }
    }

    Legend { label: "Plate, well, scribed line"; x: 370; y: 836 }

    Surface {
        height: 72
        recipe: Surface.Plate
        width: 400
        x: 370
        y: 858

        Surface { height: 40; recipe: Surface.Well; width: 120; x: 16; y: 16 }
        ScribedLine { width: 232; x: 152; y: 35 }
    }

    Legend { label: "Type"; x: 30; y: 910 }

    TabularText { pixelSize: Theme.clockSize; text: "1:02:47"; x: 28; y: 927 }
    Words { font.pixelSize: Theme.takeSize; font.weight: Font.DemiBold; text: "Sat 14 Nov"; x: 146; y: 938 }
    Words { font.pixelSize: Theme.rowSize; font.weight: Font.DemiBold; text: "Row title"; x: 260; y: 945 }
    Words { color: Theme.soft; font.pixelSize: Theme.helpSize; text: "Help text"; x: 332; y: 947 }
    Legend { label: "Legend"; x: 398; y: 948 }
    Wordmark { x: 470; y: 946 }
}
