// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/PlinthPainter.h"

#include "app/paint/Brushwork.h"
#include "app/paint/LedRing.h"
#include "app/paint/Palette.h"
#include "app/paint/Typeface.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using namespace Brushwork;
    using palette::faded;
    using palette::metal;

    void paintPlate(QPainter& painter, const QRectF& plate, double ratio)
    {
        const QRectF outer = plate.adjusted(0.5, 0.5, -0.5, -0.5);
        fillRounded(painter, outer, 12,
            falling(plate.top(), plate.bottom(), {{0, metal(33)}, {0.12, metal(27)}, {1, metal(19)}}));
        const QPointF above(plate.left() + 0.42 * plate.width(), plate.top() - 0.15 * plate.height());
        fillRounded(painter, outer, 12,
            radial(
                above, 10, 1.05 * plate.height(), {{0, faded(palette::light, 0.05)}, {1, faded(palette::light, 0)}}));
        strokeRounded(painter, outer, 12, 1, metal(5));
        strokeRounded(painter, plate.adjusted(1.5, 1.5, -1.5, -1.5), 11, 1,
            falling(plate.top(), plate.bottom(),
                {{0, faded(palette::light, 0.17)}, {0.08, faded(palette::light, 0.05)},
                    {0.9, faded(palette::light, 0.025)}, {1, faded(palette::dark, 0.5)}}));
        QPainterPath inside;
        inside.addRoundedRect(plate.adjusted(2, 2, -2, -2), 10, 10);
        grain(painter, inside, ratio);
    }

    void paintDish(QPainter& painter, const DeckGeometry& deck)
    {
        const QPointF centre = deck.centre();
        const double dish = deck.of(0.4335);
        const double top = centre.y() - dish;
        const double bottom = centre.y() + dish;
        fillDisc(painter, centre, dish, falling(top, bottom, {{0, metal(12)}, {1, metal(23)}}));
        strokeRing(painter, centre, dish, 1,
            falling(
                top, bottom, {{0, palette::dark}, {0.5, faded(palette::dark, 0.7)}, {1, faded(palette::light, 0.16)}}));
        const double trough = deck.of(0.4195);
        fillDisc(painter, centre, trough, falling(top, bottom, {{0, metal(3)}, {1, metal(9)}}));
        strokeRing(
            painter, centre, trough, 1, falling(top, bottom, {{0, palette::dark}, {1, faded(palette::light, 0.09)}}));
    }

    struct ScaleMark {
        int levelDB;
        bool hasFigure;
    };
    constexpr std::array scaleMarks{ScaleMark{-50, false}, ScaleMark{-40, false}, ScaleMark{-30, true},
        ScaleMark{-20, true}, ScaleMark{-10, true}, ScaleMark{-6, true}, ScaleMark{-3, true}, ScaleMark{0, true}};

    void paintMark(QPainter& painter, const DeckGeometry& deck, LedRing::Side side, ScaleMark mark, double ratio)
    {
        const double angle = radians(LedRing::angleAt(side, LevelScale::fraction(mark.levelDB)));
        const bool isHot = LevelScale::toneOf(mark.levelDB) >= LevelScale::Tone::warning;
        QPainterPath tick(deck.around(angle, 0.4375));
        tick.lineTo(deck.around(angle, mark.hasFigure ? 0.4445 : 0.4415));
        strokePath(painter, tick, 1, isHot ? faded(palette::amber, 0.75) : faded(palette::dim, 0.8));
        // Both arcs end in the one 0 between them.
        if (!mark.hasFigure || (mark.levelDB == 0 && side == LedRing::Side::right)) {
            return;
        }
        const double size = std::max(9.5, deck.of(0.0277));
        QPointF place = deck.around(angle, 0.4665 + 0.006 * std::abs(std::cos(angle))) + QPointF(0, 0.35 * size);
        if (mark.levelDB == 0) {
            place.setX(deck.centre().x());
        }
        const QString figure = Typeface::printed(QString::number(mark.levelDB));
        Typeface::engrave(painter,
            Typeface::outline(figure, {.size = size, .weight = QFont::DemiBold}, Typeface::onPixels(place, ratio),
                Typeface::Align::centre),
            isHot ? palette::amber : palette::dim, ratio);
    }

    void paintScale(QPainter& painter, const DeckGeometry& deck, double ratio)
    {
        for (const auto side : LedRing::sides) {
            for (const auto& mark : scaleMarks) {
                paintMark(painter, deck, side, mark, ratio);
            }
        }
        struct Legend {
            QString text;
            double degrees;
            QColor colour;
            Typeface::Style style;
        };
        const Typeface::Style sideStyle{.size = std::max(10.0, deck.of(0.03)), .weight = QFont::Bold};
        const Typeface::Style unitStyle{.size = std::max(9.5, deck.of(0.0277)), .weight = QFont::DemiBold};
        for (const auto& legend : {Legend{u"L"_s, 96.5, palette::ink, sideStyle},
                 Legend{u"R"_s, 83.5, palette::ink, sideStyle}, Legend{u"dB"_s, 90, palette::dim, unitStyle}}) {
            const QPointF place(deck.around(radians(legend.degrees), 0.4665).x(),
                deck.centre().y() + deck.of(0.4652) + 0.345 * sideStyle.size);
            Typeface::engrave(painter,
                Typeface::outline(legend.text, legend.style, Typeface::onPixels(place, ratio), Typeface::Align::centre),
                legend.colour, ratio);
        }
    }

    void paintUnlitSegments(QPainter& painter, const DeckGeometry& deck)
    {
        for (const auto side : LedRing::sides) {
            for (int i = 0; i < LedRing::segmentCount; ++i) {
                const auto place = LedRing::segment(side, i);
                strokePath(painter, arc(deck.centre(), deck.ringRadius(), place.start, place.span),
                    0.62 * deck.ringWidth(), faded(toneColour(LedRing::toneOf(i)), 0.17));
            }
        }
    }

    void paintLampPost(QPainter& painter, const DeckGeometry& deck, StrobeLamp lamp)
    {
        const QPointF at = deck.around(radians(strobeLampDegrees), 0.578);
        const auto fallingBy = [&](double share, Stops stops) {
            return falling(at.y() - deck.of(share), at.y() + deck.of(share), stops);
        };
        fillDisc(painter, at + QPointF(0, deck.of(0.006)), deck.of(0.034), faded(palette::dark, 0.5));
        fillDisc(painter, at, deck.of(0.032), fallingBy(0.032, {{0, metal(55)}, {1, metal(18)}}));
        strokeRing(painter, at, deck.of(0.0315), 0.8,
            fallingBy(0.03, {{0, faded(palette::light, 0.3)}, {1, faded(palette::dark, 0.6)}}));
        fillDisc(painter, at, deck.of(0.0235), metal(6));
        fillDisc(painter, at, deck.of(0.0215), fallingBy(0.02, {{0, metal(45)}, {1, metal(26)}}));

        painter.save();
        painter.translate(at);
        painter.rotate(-45);
        fillRounded(
            painter, {deck.of(0.004), deck.of(-0.0085), deck.of(0.0135), deck.of(0.017)}, deck.of(0.004), metal(3));
        fillRounded(painter, {deck.of(0.0065), deck.of(-0.0062), deck.of(0.0095), deck.of(0.0124)}, deck.of(0.003),
            strobeColour(lamp));
        painter.restore();
        if (lamp != StrobeLamp::out) {
            const QPointF window = at + QPointF(deck.of(0.008), deck.of(-0.008));
            fillDisc(painter, window, deck.of(0.05),
                radial(window, deck.of(0.004), deck.of(0.05),
                    {{0, faded(strobeColour(lamp), 0.3)}, {1, faded(strobeColour(lamp), 0)}}));
        }
    }

    void paintArmRest(QPainter& painter, const DeckGeometry& deck)
    {
        painter.save();
        painter.translate(deck.pivot() + QPointF(deck.of(0.0265), deck.of(0.29)));
        const QRectF block(deck.of(-0.03), deck.of(-0.017), deck.of(0.06), deck.of(0.028));
        fillRounded(painter, {deck.of(-0.03), deck.of(-0.014), deck.of(0.06), deck.of(0.03)}, deck.of(0.008),
            faded(palette::dark, 0.55));
        fillRounded(
            painter, block, deck.of(0.007), falling(block.top(), block.bottom(), {{0, metal(52)}, {1, metal(26)}}));
        strokeRounded(painter, block, deck.of(0.007), 0.8, faded(palette::light, 0.12));
        const QRectF notch(deck.of(-0.0125), deck.of(-0.017), deck.of(0.025), deck.of(0.028));
        fillRounded(painter, notch, deck.of(0.003),
            across(notch.left(), notch.right(), {{0, metal(4)}, {0.5, metal(17)}, {1, metal(4)}}));
        painter.restore();
    }

    void paintArmBase(QPainter& painter, const DeckGeometry& deck)
    {
        const QPointF at = deck.pivot();
        const QPointF shadow = at + QPointF(deck.of(0.004), deck.of(0.012));
        fillDisc(painter, shadow, deck.of(0.0905),
            radial(shadow, deck.of(0.07), deck.of(0.0905),
                {{0, faded(palette::dark, 0.6)}, {1, faded(palette::dark, 0)}}));
        const double top = at.y() - deck.of(0.083);
        const double bottom = at.y() + deck.of(0.083);
        fillDisc(painter, at, deck.of(0.083), falling(top, bottom, {{0, metal(50)}, {1, metal(21)}}));
        strokeRing(painter, at, deck.of(0.0825), 0.9,
            falling(top, bottom,
                {{0, faded(palette::light, 0.34)}, {0.6, faded(palette::light, 0.04)},
                    {1, faded(palette::dark, 0.6)}}));
        for (int i = 0; i < 60; ++i) {
            const double angle = radians(6.0 * i);
            const bool isLong = i % 5 == 0;
            const QPointF direction(std::cos(angle), std::sin(angle));
            QPainterPath tick(at + deck.of(0.0785) * direction);
            tick.lineTo(at + deck.of(isLong ? 0.0705 : 0.074) * direction);
            strokePath(painter, tick, 0.6, faded(palette::light, isLong ? 0.34 : 0.14));
        }
        fillDisc(painter, at, deck.of(0.064), palette::well);
        const QPointF corner(deck.of(0.05), deck.of(0.05));
        fillDisc(painter, at, deck.of(0.0625), linear(at - corner, at + corner, {{0, metal(36)}, {1, metal(16)}}));
        for (double radius = 0.05; radius < 0.062; radius += 0.0034) {
            strokeRing(painter, at, deck.of(radius), 0.5, faded(palette::light, 0.05));
        }
    }

}  // namespace

StrobeLamp strobeLampOf(const DeckState& state)
{
    switch (state.kind) {
    case DeckState::Kind::noSource:
        return StrobeLamp::out;
    case DeckState::Kind::recording:
        return StrobeLamp::recording;
    default:
        return StrobeLamp::ready;
    }
}

QColor strobeColour(StrobeLamp lamp)
{
    switch (lamp) {
    case StrobeLamp::out:
        return palette::lampOut;
    case StrobeLamp::ready:
        return palette::lime;
    case StrobeLamp::recording:
        return palette::red;
    }
    return palette::lampOut;
}

void paintPlinth(QPainter& painter, const QRectF& plate, const DeckGeometry& geometry, StrobeLamp lamp, double ratio)
{
    paintPlate(painter, plate, ratio);
    paintDish(painter, geometry);
    paintScale(painter, geometry, ratio);
    paintUnlitSegments(painter, geometry);
    paintLampPost(painter, geometry, lamp);
    paintArmRest(painter, geometry);
    paintArmBase(painter, geometry);
}

}  // namespace vantiro
