// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/GlassPainter.h"

#include "app/paint/Brushwork.h"
#include "app/paint/DeckWords.h"
#include "app/paint/LedRing.h"
#include "app/paint/LevelScale.h"
#include "app/paint/Palette.h"
#include "app/paint/Typeface.h"

#include <algorithm>
#include <utility>

namespace vantiro {

namespace {

    using namespace Brushwork;
    using palette::faded;
    using palette::metal;
    using Typeface::Align;
    using Kind = DeckState::Kind;

    QPointF below(const DeckGeometry& deck, double share)
    {
        return deck.centre() + QPointF(0, deck.of(share));
    }

    double peakOf(const MeterLevels& levels)
    {
        return double{std::max(levels.holdLeft, levels.holdRight)};
    }

    QColor captionColour(Kind kind)
    {
        switch (kind) {
        case Kind::recording:
            return palette::red;
        case Kind::noSource:
            return palette::amber;
        default:
            return palette::lime;
        }
    }

    /// The same for words, with their feet on whole pixels.
    QPointF baseline(const QPainter& painter, const DeckGeometry& deck, double share)
    {
        return Typeface::onPixels(below(deck, share), painter.device()->devicePixelRatioF());
    }

    void paintCaption(QPainter& painter, const DeckGeometry& deck, const DeckState& state)
    {
        const QString text = DeckWords::caption(state);
        const Typeface::Style style{.size = deck.of(0.0335), .weight = QFont::Bold, .tracking = deck.of(0.006)};
        const bool hasLamp = state.kind == Kind::recording;
        // The lamp and the word stand in the middle together.
        const QPointF place = baseline(painter, deck, -0.0565) + QPointF(hasLamp ? deck.of(0.016) : 0, 0);
        painter.fillPath(Typeface::outline(text, style, place, Align::centre), captionColour(state.kind));
        if (hasLamp) {
            const QPointF lamp = place - QPointF(Typeface::width(text, style) / 2 + deck.of(0.022), 0.35 * style.size);
            fillDisc(painter, lamp, deck.of(0.022),
                radial(lamp, deck.of(0.006), deck.of(0.022),
                    {{0, faded(palette::red, 0.4)}, {1, faded(palette::red, 0)}}));
            fillDisc(painter, lamp, deck.of(0.0105), palette::red);
        }
    }

    void paintHint(QPainter& painter, const DeckGeometry& deck, const QStringList& lines)
    {
        const Typeface::Style style{.size = deck.of(0.03), .weight = QFont::DemiBold, .tracking = deck.of(0.0045)};
        double line = -0.0765;  // High enough that the larger clock stays clear of the second line.
        for (const QString& text : lines) {
            painter.fillPath(
                Typeface::outline(text, style, baseline(painter, deck, line), Align::centre), palette::ink);
            line += 0.0325;
        }
    }

    double clockSize(qsizetype length)
    {
        constexpr qsizetype belowAnHour = 5;
        constexpr qsizetype belowTenHours = 7;
        if (length <= belowAnHour) {
            return 0.088;
        }
        return length <= belowTenHours ? 0.0725 : 0.068;
    }

    void paintClock(QPainter& painter, const DeckGeometry& deck, const Readout& readout)
    {
        const Typeface::Style style{.size = deck.of(clockSize(readout.clock.size())), .weight = QFont::Medium};
        painter.fillPath(Typeface::tabular(readout.clock, style, baseline(painter, deck, 0.026), Align::centre),
            readout.state.armDown() ? palette::ink : palette::faint);
    }

    void paintLevelCaption(QPainter& painter, const DeckGeometry& deck, const MeterLevels& levels)
    {
        const QString text = Typeface::printed(DeckWords::levelCaption(levels));
        const double peak = peakOf(levels);
        const bool hasFigure = !levels.clipped && peak > double{meterFloorDB};
        const bool isHot = hasFigure && LevelScale::toneOf(peak) >= LevelScale::Tone::warning;
        const Typeface::Style style{.size = deck.of(0.0308),
            .weight = hasFigure ? QFont::DemiBold : QFont::Bold,
            .tracking = deck.of(hasFigure ? 0.0022 : 0.004)};
        painter.fillPath(Typeface::outline(text, style, baseline(painter, deck, 0.0795), Align::centre),
            levels.clipped ? palette::red
                : isHot    ? palette::amber
                           : palette::dim);
    }

    /// What a press does while a take plays: the two bars of a pause, or the triangle that goes on.
    void paintPlaySymbol(QPainter& painter, const DeckGeometry& deck, const DeckState& state)
    {
        const double height = deck.of(0.03);
        const QPointF middle = below(deck, 0.0675);
        QPainterPath symbol;
        if (state.paused) {
            const QPointF tip = middle + QPointF(0.5 * height, 0);
            symbol.moveTo(middle + QPointF(-0.36 * height, -0.5 * height));
            symbol.lineTo(tip);
            symbol.lineTo(middle + QPointF(-0.36 * height, 0.5 * height));
            symbol.closeSubpath();
        } else {
            for (const double side : {-1.0, 1.0}) {
                const QRectF bar(
                    middle.x() + side * 0.26 * height - 0.13 * height, middle.y() - height / 2, 0.26 * height, height);
                symbol.addRoundedRect(bar, 0.06 * height, 0.06 * height);
            }
        }
        painter.fillPath(symbol, palette::ink);
    }

    void paintBezel(QPainter& painter, const DeckGeometry& deck, const Readout& readout)
    {
        const QPointF centre = deck.centre();
        const double glass = deck.glassRadius();
        fillDisc(painter, centre, glass + deck.of(0.006),
            falling(centre.y() - glass, centre.y() + glass, {{0, metal(6)}, {1, metal(66)}}));
        fillDisc(painter, centre, glass + deck.of(0.0025), metal(4));
        fillDisc(painter, centre, glass,
            radial(centre - QPointF(0, glass / 2), 0.1 * glass, 1.5 * glass,
                {{0, readout.isHovered ? palette::glassHover : palette::glassTop}, {1, palette::glassBottom}}));
    }

    void paintReflection(QPainter& painter, const DeckGeometry& deck)
    {
        const QPointF centre = deck.centre();
        const double glass = deck.glassRadius();
        const double top = centre.y() - glass;
        QPainterPath inside;
        inside.addEllipse(centre, glass - 0.5, glass - 0.5);
        QPainterPath sky;
        sky.addEllipse(centre - QPointF(0, 1.05 * glass), 1.15 * glass, 0.82 * glass);
        painter.fillPath(inside.intersected(sky),
            falling(
                top, centre.y() - 0.2 * glass, {{0, faded(palette::light, 0.075)}, {1, faded(palette::light, 0.012)}}));
        strokeRing(painter, centre, glass - 0.4, 0.8,
            falling(top, centre.y() + glass, {{0, palette::dark}, {1, faded(palette::light, 0.1)}}));
    }

}  // namespace

bool Readout::looksLike(const Readout& other) const
{
    const auto lit = [](const MeterLevels& of) {
        return std::pair(
            LedRing::lit(double{of.left}, double{of.holdLeft}), LedRing::lit(double{of.right}, double{of.holdRight}));
    };
    return readsLike(other) && lit(levels) == lit(other.levels);
}

bool Readout::readsLike(const Readout& other) const
{
    if (state.kind != other.state.kind || state.paused != other.state.paused || clock != other.clock
        || isHovered != other.isHovered || scale != other.scale) {
        return false;
    }
    // No level is told while a take plays, and its marks fall from one picture to the next.
    return state.kind == Kind::playing
        || (LevelScale::toneOf(peakOf(levels)) == LevelScale::toneOf(peakOf(other.levels))
            && DeckWords::levelCaption(levels) == DeckWords::levelCaption(other.levels));
}

void paintGlass(QPainter& painter, const DeckGeometry& geometry, const Readout& readout)
{
    painter.save();
    painter.translate(geometry.centre());
    painter.scale(readout.scale, readout.scale);
    painter.translate(-geometry.centre());
    paintBezel(painter, geometry, readout);
    const QStringList hint = DeckWords::hintLines(readout.state);
    if (readout.isHovered && hint.size() > 1) {
        paintHint(painter, geometry, hint);
    } else {
        paintCaption(painter, geometry, readout.state);
    }
    paintClock(painter, geometry, readout);
    if (readout.state.kind == Kind::playing) {
        paintPlaySymbol(painter, geometry, readout.state);
    } else {
        paintLevelCaption(painter, geometry, readout.levels);
    }
    paintReflection(painter, geometry);
    painter.restore();
}

}  // namespace vantiro
