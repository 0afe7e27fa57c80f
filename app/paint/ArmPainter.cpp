// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/ArmPainter.h"

#include "app/paint/Brushwork.h"
#include "app/paint/DeckBitmap.h"
#include "app/paint/Palette.h"

#include <array>

namespace vantiro {

namespace {

    using namespace Brushwork;
    using palette::faded;
    using palette::metal;

    constexpr double shellDegrees = 7.5;

    /// Lengths in terms of the deck's size.
    struct Scale {
        double size;

        double operator()(double share) const { return share * size; }
        [[nodiscard]] QPointF at(double x, double y) const { return {x * size, y * size}; }
        [[nodiscard]] QRectF box(double x, double y, double width, double height) const
        {
            return {x * size, y * size, width * size, height * size};
        }
    };

    QPainterPath tubePath(const Scale& of)
    {
        QPainterPath path(of.at(0, -0.03));
        path.lineTo(of.at(0, 0.135));
        path.cubicTo(of.at(0, 0.215), of.at(0.027, 0.235), of.at(0.027, 0.300));
        path.cubicTo(of.at(0.027, 0.350), of.at(0.014, 0.368), of.at(0.0085, 0.398));
        return path;
    }

    QPainterPath shellPath(const Scale& of)
    {
        QPainterPath path(of.at(-0.0105, 0));
        path.lineTo(of.at(0.0105, 0));
        path.lineTo(of.at(0.0165, 0.016));
        path.lineTo(of.at(0.0150, 0.070));
        path.quadTo(of.at(0.0145, 0.076), of.at(0.009, 0.076));
        path.lineTo(of.at(-0.009, 0.076));
        path.quadTo(of.at(-0.0145, 0.076), of.at(-0.0150, 0.070));
        path.lineTo(of.at(-0.0165, 0.016));
        path.closeSubpath();
        return path;
    }

    void turnToShell(QPainter& painter, const Scale& of)
    {
        painter.translate(of.at(0.0085, 0.394));
        painter.rotate(shellDegrees);
    }

    void paintCounterweight(QPainter& painter, const Scale& of)
    {
        fillRounded(painter, of.box(-0.0085, -0.105, 0.017, 0.09), of(0.003),
            across(of(-0.0085), of(0.0085), {{0, metal(32)}, {0.35, metal(137)}, {1, metal(32)}}));
        const QRectF weight = of.box(-0.029, -0.1, 0.058, 0.06);
        fillRounded(painter, weight, of(0.006),
            across(weight.left(), weight.right(),
                {{0, metal(12)}, {0.18, metal(54)}, {0.36, metal(118)}, {0.5, metal(67)}, {0.8, metal(26)},
                    {1, metal(12)}}));
        for (int i = 0; i < 5; ++i) {
            painter.fillRect(of.box(-0.029, -0.094 + i * 0.0058, 0.058, 0.0022), faded(palette::dark, 0.55));
        }
        painter.fillRect(of.box(-0.029, -0.061, 0.058, 0.014), palette::face);
        for (int i = -4; i <= 4; ++i) {
            const double height = i % 2 == 0 ? 0.009 : 0.005;
            painter.fillRect(QRectF(of(i * 0.0058) - 0.3, of(-0.059), 0.7, of(height)),
                i == 0 ? palette::lime : faded(palette::light, 0.65));
        }
        strokeRounded(painter, weight.adjusted(0.3, 0.3, -0.3, -0.3), of(0.006), 0.7, faded(palette::light, 0.14));
    }

    void paintTube(QPainter& painter, const Scale& of)
    {
        struct Layer {
            double width;
            int lightness;
        };
        constexpr std::array layers{
            Layer{0.0190, 5}, Layer{0.0165, 50}, Layer{0.0132, 97}, Layer{0.0092, 155}, Layer{0.0048, 213}};
        const QPainterPath path = tubePath(of);
        double shift = 0;  // The light falls from the upper left.
        for (const auto& layer : layers) {
            strokePath(painter, path.translated(-of(shift), 0), of(layer.width), metal(layer.lightness), Qt::RoundCap);
            shift += 0.00055;
        }
    }

    void paintGimbal(QPainter& painter, const Scale& of)
    {
        fillRounded(painter, of.box(-0.043, -0.0125, 0.086, 0.025), of(0.006), metal(6));
        const QRectF bridge = of.box(-0.0415, -0.0125, 0.083, 0.0235);
        fillRounded(painter, bridge, of(0.005),
            falling(bridge.top(), bridge.bottom(), {{0, metal(99)}, {0.5, metal(49)}, {1, metal(26)}}));
        strokeRounded(painter, bridge, of(0.005), 0.6, faded(palette::light, 0.28));
        for (const double side : {-1.0, 1.0}) {
            fillDisc(painter, of.at(side * 0.033, -0.001), of(0.0062), palette::face);
            fillDisc(painter, of.at(side * 0.033, -0.001), of(0.0046), metal(118));
        }
        const QPointF middle;
        fillDisc(painter, middle, of(0.0265), metal(5));
        fillDisc(painter, middle, of(0.0245),
            linear(of.at(-0.02, -0.02), of.at(0.02, 0.02), {{0, metal(137)}, {0.45, metal(67)}, {1, metal(27)}}));
        fillDisc(painter, middle, of(0.0165),
            linear(of.at(-0.01, -0.01), of.at(0.012, 0.012), {{0, metal(49)}, {1, metal(85)}}));
        strokeRing(painter, middle, of(0.0243), 0.6, faded(palette::light, 0.3));
        fillDisc(painter, middle, of(0.004), palette::face);
    }

    void paintLamp(QPainter& painter, const Scale& of, NeedleLamp lamp)
    {
        fillRounded(painter, of.box(-0.0048, 0.0575, 0.0096, 0.0088), of(0.002), metal(6));
        fillRounded(painter, of.box(-0.0036, 0.0585, 0.0072, 0.0066), of(0.0016),
            lamp == NeedleLamp::lit ? palette::red : palette::redLampOut);
        if (lamp == NeedleLamp::lit) {
            fillDisc(painter, of.at(0, 0.062), of(0.018),
                radial(of.at(0, 0.062), 0, of(0.018), {{0, faded(palette::red, 0.55)}, {1, faded(palette::red, 0)}}));
        }
    }

    void paintHeadshell(QPainter& painter, const Scale& of, NeedleLamp lamp)
    {
        painter.save();
        turnToShell(painter, of);
        fillRounded(painter, of.box(-0.0118, -0.014, 0.0236, 0.018), of(0.003),
            across(of(-0.0118), of(0.0118), {{0, metal(12)}, {0.35, metal(167)}, {0.6, metal(85)}, {1, metal(12)}}));
        for (int i = 0; i < 3; ++i) {
            painter.fillRect(of.box(-0.0118, -0.0105 + i * 0.004, 0.0236, 0.0014), faded(palette::dark, 0.5));
        }
        const QPainterPath shell = shellPath(of);
        strokePath(painter, shell, of(0.004), metal(4));
        painter.fillPath(shell, across(of(-0.016), of(0.016), {{0, metal(67)}, {0.3, metal(49)}, {1, metal(21)}}));
        strokePath(painter, shell, 0.7, faded(palette::light, 0.3));
        for (const double x : {-0.0062, 0.0062}) {
            fillRounded(painter, of.box(x - 0.0016, 0.026, 0.0032, 0.024), of(0.0016), metal(6));
        }
        QPainterPath fingerLift(of.at(0.0150, 0.046));
        fingerLift.quadTo(of.at(0.036, 0.050), of.at(0.039, 0.060));
        strokePath(painter, fingerLift, of(0.0068), metal(5), Qt::RoundCap);
        strokePath(painter, fingerLift, of(0.0042), metal(155), Qt::RoundCap);
        paintLamp(painter, of, lamp);
        painter.restore();
    }

}  // namespace

QRectF armArea(double size)
{
    return Scale{size}.box(-0.075, -0.135, 0.155, 0.66);
}

void paintArm(QPainter& painter, double size, NeedleLamp lamp)
{
    const Scale of{size};
    paintCounterweight(painter, of);
    paintTube(painter, of);
    paintGimbal(painter, of);
    paintHeadshell(painter, of, lamp);
}

void paintArmShape(QPainter& painter, double size)
{
    const Scale of{size};
    strokePath(painter, tubePath(of), of(0.017), palette::dark, Qt::RoundCap);
    fillRounded(painter, of.box(-0.029, -0.098, 0.058, 0.058), of(0.006), palette::dark);
    painter.save();
    turnToShell(painter, of);
    painter.fillPath(shellPath(of), palette::dark);
    painter.restore();
}

void paintArmShadow(QPainter& painter, double size, double ratio)
{
    DeckBitmap shape;
    const DeckBitmap::Subject subject{.area = armArea(size), .ratio = ratio};
    if (const QImage* image = shape.picture(subject, [size](QPainter& inner) { paintArmShape(inner, size); })) {
        painter.setOpacity(0.5);
        painter.drawImage(
            DeckBitmap::snapped(subject.area, ratio).topLeft(), softShadow(*image, 0.0075 * size * ratio));
        painter.setOpacity(1);
    }
}

QPointF armShadowOffset(double size, double amount)
{
    return {0.010 * size, (0.024 - 0.008 * amount) * size};
}

void paintNeedleGlow(QPainter& painter, double size, QPointF tip)
{
    const double reach = 0.05 * size;
    fillDisc(painter, tip, reach,
        radial(tip, 0, reach,
            {{0, faded(palette::red, 0.34)}, {0.5, faded(palette::red, 0.09)}, {1, faded(palette::red, 0)}}));
}

}  // namespace vantiro
