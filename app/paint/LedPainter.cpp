// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/LedPainter.h"

#include "app/paint/Brushwork.h"
#include "app/paint/Palette.h"

namespace vantiro {

namespace {

    using namespace Brushwork;
    using palette::faded;

    constexpr double wideGlow = 1.95;
    constexpr double nearGlow = 1.4;
    constexpr double hotCore = 0.42;
    constexpr double sweepWidth = 0.62;
    constexpr double sweepGap = 0.8;  ///< Degrees between two pieces, so that they read as lamps.

    QPainterPath arcOf(const DeckGeometry& deck, const LedRing::Arc& place)
    {
        return arc(deck.centre(), deck.ringRadius(), place.start, place.span);
    }

}  // namespace

void paintLitSegment(QPainter& painter, const DeckGeometry& geometry, LedRing::Side side, int index)
{
    const auto tone = LedRing::toneOf(index);
    const bool isQuiet = tone == LevelScale::Tone::quiet;
    const QColor colour = toneColour(tone);
    const QPainterPath path = arcOf(geometry, LedRing::segment(side, index));
    const double width = geometry.ringWidth();
    strokePath(painter, path, wideGlow * width, faded(colour, isQuiet ? 0.05 : 0.075));
    strokePath(painter, path, nearGlow * width, faded(colour, isQuiet ? 0.07 : 0.11));
    strokePath(painter, path, width, colour);
    strokePath(painter, path, hotCore * width, faded(palette::gloss, 0.08));
}

double ringGlowWidth(const DeckGeometry& geometry)
{
    return wideGlow * geometry.ringWidth();
}

void paintSweep(QPainter& painter, const DeckGeometry& geometry, double seconds)
{
    for (const auto& piece : LedRing::sweep(seconds)) {
        const LedRing::Arc lamp{.start = piece.arc.start + sweepGap, .span = piece.arc.span - sweepGap};
        strokePath(
            painter, arcOf(geometry, lamp), sweepWidth * geometry.ringWidth(), faded(palette::lime, piece.opacity));
    }
}

}  // namespace vantiro
