// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/SurfaceColours.h"
#include "app/qml/Surface.h"

#include <span>

namespace vantiro {

namespace {

    using Side = Shade::Side;

    QColor light(double alpha)
    {
        return palette::faded(palette::light, alpha);
    }

    QColor dark(double alpha)
    {
        return palette::faded(palette::dark, alpha);
    }

    /// A hard line of light or darkness on the surface, `down` points from its upper edge or, below 0, from its lower.
    Shade bevel(double down, const QColor& colour)
    {
        return {.side = Side::inside, .down = down, .colour = colour};
    }

    Shade side(double across, const QColor& colour)
    {
        return {.side = Side::inside, .across = across, .colour = colour};
    }

    Shade rim(const QColor& colour)
    {
        return {.side = Side::inside, .spread = 1, .colour = colour};
    }

    Shade hollow(double down, double blur, double alpha)
    {
        return {.side = Side::inside, .down = down, .blur = blur, .colour = dark(alpha)};
    }

    Shade gap(const QColor& colour)
    {
        return {.spread = 1, .colour = colour};
    }

    Shade lip(double alpha, double spread = 0)
    {
        return {.down = 1, .spread = spread, .colour = light(alpha)};
    }

    Shade cast(double down, double blur, double alpha, double spread = 0)
    {
        return {.down = down, .blur = blur, .spread = spread, .colour = dark(alpha)};
    }

    /// Colours at even distances.
    std::vector<FillStop> even(std::span<const QColor> colours)
    {
        std::vector<FillStop> stops;
        stops.reserve(colours.size());
        for (std::size_t index = 0; index < colours.size(); ++index) {
            stops.push_back({double(index) / double(std::max<std::size_t>(colours.size() - 1, 1)), colours[index]});
        }
        return stops;
    }

    /// A big key is brightest where the light falls on its upper edge.
    std::vector<FillStop> bigKeyFill(std::span<const QColor> colours)
    {
        std::vector<FillStop> stops = even(colours);
        if (stops.size() == 3) {
            stops[1].at = 0.55;
        }
        return stops;
    }

    /// A cap that is gripped from the sides, bright in the middle.
    std::vector<FillStop> capFill(std::span<const QColor> colours)
    {
        return {{0, colours[0]}, {0.45, colours[1]}, {0.55, colours[1]}, {1, colours[0]}};
    }

    std::vector<Shade> keyShades(Surface::State state)
    {
        switch (state) {
        case Surface::State::pressed:
            return {hollow(2, 3, 0.65), rim(dark(0.4)), gap(palette::slot), lip(0.07, 1)};
        case Surface::State::disabled:
            return {bevel(1, light(0.05)), gap(palette::plateSlot), lip(0.04, 1)};
        case Surface::State::rest:
        case Surface::State::hovered:
            break;
        }
        return {bevel(1, light(0.13)), bevel(-1, dark(0.45)), side(1, light(0.03)), side(-1, light(0.03)),
            gap(palette::slot), lip(0.07, 1), cast(2, 3, 0.45, 1)};
    }

    std::vector<FillStop> keyFill(Surface::State state)
    {
        switch (state) {
        case Surface::State::hovered:
            return even(palette::keyHovered);
        case Surface::State::pressed:
            return even(palette::keyPressed);
        case Surface::State::disabled:
            return even(palette::keyDisabled);
        case Surface::State::rest:
            break;
        }
        return even(palette::keyGradient);
    }

    std::vector<FillStop> bigKeyFill(Surface::State state)
    {
        switch (state) {
        case Surface::State::hovered:
            return bigKeyFill(palette::bigKeyHovered);
        case Surface::State::pressed:
            return bigKeyFill(palette::bigKeyPressed);
        case Surface::State::disabled:
            return bigKeyFill(palette::bigKeyDisabled);
        case Surface::State::rest:
            break;
        }
        return bigKeyFill(palette::bigKeyGradient);
    }

    SurfaceLook pickerKey(Surface::State state)
    {
        if (state == Surface::State::pressed) {
            return {.fill = even(palette::pickerKeyChosen), .shades = {hollow(1, 2, 0.8)}, .radius = 4};
        }
        const bool hovered = state == Surface::State::hovered;
        return {.fill = hovered ? even(palette::pickerKeyHovered) : even(palette::pickerKeyGradient),
            .shades = {bevel(1, light(0.07))},
            .radius = 4};
    }

    std::vector<Shade> floating(double topLight, double rimLight, const QColor& slot, const Shade& shadow)
    {
        return {bevel(1, light(topLight)), rim(light(rimLight)), gap(slot), shadow};
    }

}  // namespace

SurfaceLook Surface::look(Recipe recipe, State state)
{
    const bool hovered = state == State::hovered || state == State::pressed;
    switch (recipe) {
    case Plate:
        break;
    case Well:
        return {
            .fill = even(palette::wellGradient), .shades = {hollow(1, 2, 1), rim(dark(0.85)), lip(0.075)}, .radius = 6};
    case Key:
        return {.fill = keyFill(state), .shades = keyShades(state), .radius = 5};
    case BigKey:
        return {.fill = bigKeyFill(state), .shades = keyShades(state), .radius = 8};
    case Foot:
        return {
            .fill = even(palette::footGradient), .shades = {bevel(1, light(0.09)), gap(palette::slot)}, .radius = 0};
    case Sheet:
        return {.fill = even(palette::sheetGradient),
            .shades = floating(0.12, 0.04, palette::sheetSlot, cast(10, 30, 0.7)),
            .radius = 10};
    case Menu:
        return {.fill = {{0, palette::menuFill}},
            .shades = floating(0.1, 0.04, palette::sheetSlot, cast(8, 22, 0.65)),
            .radius = 7};
    case MenuRow:
        return {.fill = {{0, palette::rowFill}}, .shades = {}, .radius = 4};
    case ToolTip:
        return {.fill = {{0, palette::toolTipFill}},
            .shades = {bevel(1, light(0.1)), gap(palette::slot), cast(3, 8, 0.6)},
            .radius = 5};
    case ToggleWell:
        return {.fill = even(palette::slideGradient), .shades = {hollow(1, 2, 1), lip(0.08)}, .radius = 11};
    case ToggleCap:
        return {.fill = even(hovered ? palette::capHovered : palette::capGradient),
            .shades = {bevel(1, light(0.18)), bevel(-1, dark(0.4)), cast(1, 2, 1)},
            .radius = 9};
    case PickerWell:
        return {.fill = even(palette::wellGradient), .shades = {hollow(1, 2, 1), lip(0.08)}, .radius = 6};
    case PickerKey:
        return pickerKey(state);
    case Rail:
        return {.fill = even(palette::railGradient), .shades = {hollow(1, 1, 1), lip(0.08)}, .radius = 3};
    case RailCap:
        return {.direction = SurfaceLook::Fill::across,
            .fill = capFill(hovered ? palette::railCapHovered : palette::railCap),
            .shades = {bevel(1, light(0.25)), gap(palette::slot), cast(2, 3, 0.6)},
            .radius = 3};
    }
    return {.fill = even(palette::plateGradient),
        .shades = {bevel(1, light(0.085)), rim(light(0.03)), bevel(-1, dark(0.6)), gap(palette::plateSlot),
            cast(2, 3, 0.35)},
        .radius = 8};
}

}  // namespace vantiro
