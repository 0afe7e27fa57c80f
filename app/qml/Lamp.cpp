// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/Lamp.h"

#include "app/paint/SurfaceColours.h"
#include "app/qml/PictureCache.h"

#include <span>

namespace vantiro {

namespace {

    // More than half of any lamp's height: the ends are round.
    constexpr double roundEnds = 100;

    std::span<const QColor> lensColours(Lamp::Light light)
    {
        switch (light) {
        case Lamp::Amber:
            return palette::amberLens;
        case Lamp::Red:
            return palette::redLens;
        case Lamp::Lime:
            break;
        }
        return palette::limeLens;
    }

    Shade glow(double blur, const QColor& colour, double alpha)
    {
        return {.blur = blur, .colour = palette::faded(colour, alpha)};
    }

    Shade upperLine()
    {
        return {.side = Shade::Side::inside, .down = 1, .blur = 1, .colour = palette::faded(palette::dark, 0.7)};
    }

    Shade seat()
    {
        return {.spread = 1.5, .colour = palette::lensSeat};
    }

}  // namespace

SurfaceLook Lamp::lit(Form form, Light light)
{
    const std::span<const QColor> colours = lensColours(light);
    const QColor colour = colours[1];
    if (form == Lens) {
        return {.direction = SurfaceLook::Fill::lens,
            .fill = {{0, colours[0]}, {0.55, colour}, {1, colours[2]}},
            .shades = {seat(), glow(7, colour, 0.55)},
            .radius = roundEnds};
    }
    return {.fill = {{0, colour}}, .shades = {glow(5, colour, 0.5), glow(12, colour, 0.22)}, .radius = roundEnds};
}

SurfaceLook Lamp::out(Form form)
{
    if (form == Lens) {
        return {.fill = {{0, palette::lensOut}},
            .shades = {upperLine(), seat(), {.down = 1, .spread = 1.5, .colour = palette::faded(palette::light, 0.07)}},
            .radius = roundEnds};
    }
    return {.fill = {{0, palette::pipeOut}},
        .shades = {upperLine(), {.spread = 1, .colour = palette::faded(palette::dark, 0.5)}},
        .radius = roundEnds};
}

void Lamp::setForm(Form form)
{
    if (m_form != form) {
        m_form = form;
        repaint();
        Q_EMIT changed();
    }
}

void Lamp::setLight(Light light)
{
    if (m_light != light) {
        m_light = light;
        repaint();
        Q_EMIT changed();
    }
}

void Lamp::setLevel(double level)
{
    if (m_level != level) {
        m_level = level;
        repaint();
        Q_EMIT changed();
    }
}

Picture Lamp::picture(double ratio) const
{
    const auto painted = [this, ratio](int colour, const SurfaceLook& look) {
        const QString key =
            QStringLiteral("lamp %1 %2 %3x%4 %5").arg(int(m_form)).arg(colour).arg(width()).arg(height()).arg(ratio);
        return cachedPicture(key, [&] { return surfacePicture(size(), look, ratio); });
    };
    return crossfade(painted(-1, out(m_form)), painted(int(m_light), lit(m_form, m_light)), m_level);
}

}  // namespace vantiro
