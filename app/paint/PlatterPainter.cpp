// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/PlatterPainter.h"

#include "app/paint/Brushwork.h"
#include "app/paint/Palette.h"
#include "app/paint/Typeface.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace vantiro {

namespace {

    using namespace Brushwork;
    using palette::faded;
    using palette::metal;

    constexpr double fullCircle = 360;

    /// How far apart two directions are, in degrees, 0 to 180.
    double apart(double one, double other)
    {
        return std::abs(std::remainder(one - other, fullCircle));
    }

    void paintRim(QPainter& painter, const DeckGeometry& deck)
    {
        const QPointF centre = deck.centre();
        const double rim = deck.of(0.3665);
        fillDisc(painter, centre + QPointF(0, deck.of(0.006)), rim + deck.of(0.004), faded(palette::dark, 0.8));
        const QPointF corner(deck.of(0.26), deck.of(0.26));
        fillDisc(painter, centre, rim,
            linear(centre - corner, centre + corner, {{0, metal(60)}, {0.5, metal(32)}, {1, metal(18)}}));
        // Turned metal: what it mirrors, by direction from the top, clockwise.
        QConicalGradient turned(centre, 90);
        turned.setInterpolationMode(QGradient::ComponentInterpolation);
        constexpr std::array<std::pair<double, double>, 11> mirrored{{{0, 0.20}, {0.07, 0.03}, {0.2, 0.02}, {0.3, 0.10},
            {0.38, 0.02}, {0.5, 0.10}, {0.6, 0.02}, {0.72, 0.09}, {0.8, 0.02}, {0.93, 0.03}, {1, 0.20}}};
        for (const auto& [place, strength] : mirrored) {
            turned.setColorAt(1 - place, faded(palette::light, strength));
        }
        fillDisc(painter, centre, rim, turned);
        strokeRing(painter, centre, rim - 0.4, 0.8,
            falling(centre.y() - rim, centre.y() + rim,
                {{0, faded(palette::light, 0.42)}, {0.6, faded(palette::light, 0.05)},
                    {1, faded(palette::dark, 0.5)}}));
    }

    void paintVinyl(QPainter& painter, const DeckGeometry& deck)
    {
        const QPointF centre = deck.centre();
        const double record = deck.recordRadius();
        const double label = deck.labelRadius();
        fillDisc(painter, centre, record + deck.of(0.004), metal(3));
        fillDisc(painter, centre, record,
            radial(centre, label, record, {{0, metal(11)}, {0.75, metal(9)}, {0.96, metal(13)}, {1, metal(24)}}));
        std::uint32_t chance = 11;
        for (double r = label + deck.of(0.008); r < record - deck.of(0.006); r += deck.of(0.0031)) {
            chance = chance * 1'664'525U + 1'013'904'223U;
            strokeRing(painter, centre, r, 0.55, faded(palette::light, 0.022 + 0.035 * chance / 4'294'967'296.0));
        }
        for (const double share : {0.2415, 0.3235}) {
            strokeRing(painter, centre, deck.of(share), deck.of(0.0042), faded(palette::dark, 0.85));
            strokeRing(painter, centre, deck.of(share + 0.0028), 0.5, faded(palette::light, 0.07));
        }
    }

    void paintSheen(QPainter& painter, const DeckGeometry& deck)
    {
        struct Lobe {
            double degrees;
            double width;
            double strength;
        };
        constexpr std::array lobes{Lobe{-62, 17, 0.17}, Lobe{118, 17, 0.10}, Lobe{-28, 8, 0.05}, Lobe{152, 8, 0.04}};
        constexpr int stops = 180;
        QConicalGradient gradient(deck.centre(), 0);
        for (int i = 0; i <= stops; ++i) {
            const double share = double(i) / stops;
            double strength = 0;
            for (const auto& lobe : lobes) {
                const double distance = apart(share * fullCircle, lobe.degrees) / lobe.width;
                strength += lobe.strength * std::exp(-distance * distance);
            }
            gradient.setColorAt(1 - share, faded(palette::sheen, strength));
        }
        const double record = deck.recordRadius();
        fillDisc(painter, deck.centre(), record - 0.3, gradient);
        const double middle = deck.centre().y();
        strokeRing(painter, deck.centre(), record - 0.5, 1,
            falling(middle - record, middle + record,
                {{0, faded(palette::light, 0.24)}, {0.5, faded(palette::light, 0.04)},
                    {1, faded(palette::light, 0.02)}}));
    }

    void paintPaper(QPainter& painter, const DeckGeometry& deck)
    {
        const QPointF centre = deck.centre();
        const double label = deck.labelRadius();
        fillDisc(painter, centre, label + deck.of(0.004), palette::dark);
        fillDisc(painter, centre, label,
            falling(centre.y() - label, centre.y() + label, {{0, palette::paperTop}, {1, palette::paperBottom}}));
        strokeRing(painter, centre, label - deck.of(0.0035), deck.of(0.0042), faded(palette::lime, 0.85));
        strokeRing(painter, centre, label - deck.of(0.0105), 0.6, faded(palette::lime, 0.28));
    }

}  // namespace

void paintPlatter(QPainter& painter, const DeckGeometry& geometry)
{
    paintRim(painter, geometry);
    paintVinyl(painter, geometry);
    paintSheen(painter, geometry);
    paintPaper(painter, geometry);
}

void paintStrobeDots(QPainter& painter, double size, StrobeLamp lamp)
{
    constexpr double lampReach = 44;
    const auto box = [size](double width, double height) {
        return QRectF(-width / 2 * size, -height / 2 * size, width * size, height * size);
    };
    for (int i = 0; i < strobeDotCount; ++i) {
        const double degrees = i * fullCircle / strobeDotCount;
        const double glow =
            lamp == StrobeLamp::out ? 0 : std::max(0.0, 1 - apart(degrees, strobeLampDegrees) / lampReach);
        const double plain = 0.34 + 0.28 * std::max(0.0, -std::sin(radians(degrees)));
        painter.save();
        painter.rotate(degrees);
        painter.translate(0.3575 * size, 0);
        fillRounded(painter, box(0.0104, 0.0072), 0.0028 * size, metal(6));
        fillRounded(painter, box(0.0084, 0.0056), 0.0024 * size,
            glow > 0 ? faded(strobeColour(lamp), std::max(0.6 * plain, 0.25 + 0.75 * glow))
                     : faded(palette::ink, plain));
        painter.restore();
    }
}

void paintLabelBand(QPainter& painter, double size, const QString& text)
{
    const Typeface::Style style{.size = 0.0285 * size, .weight = QFont::DemiBold};
    const double radius = 0.1555 * size;
    const double circle = 2 * std::numbers::pi * radius;
    std::vector<double> widths;
    double length = 0;
    for (const QChar character : text) {
        widths.push_back(Typeface::width(QString(character), style));
        length += widths.back();
    }
    if (length <= 0) {
        return;
    }
    const int repeats = std::max(1, static_cast<int>(circle / (1.02 * length)));
    const double spread = (circle - length * repeats) / double(text.size() * repeats);
    double degrees = -0.9 * 180 / std::numbers::pi;  // Where the text begins on a record that has not turned yet.
    for (int repeat = 0; repeat < repeats; ++repeat) {
        for (qsizetype i = 0; i < text.size(); ++i) {
            const double half = (widths[static_cast<std::size_t>(i)] + spread) / 2 / radius * 180 / std::numbers::pi;
            degrees += half;
            painter.save();
            painter.rotate(degrees);
            painter.fillPath(Typeface::outline(QString(text[i]), style, {0, -radius}, Typeface::Align::centre),
                faded(palette::paperInk, 0.92));
            painter.restore();
            degrees += half;
        }
    }
}

}  // namespace vantiro
