// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/SurfacePicture.h"

#include <QPainter>
#include <QRectF>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ranges>

namespace vantiro {

namespace {

    /// A colour with its parts multiplied by its opacity, 0 to 1.
    struct Tone {
        double red = 0;
        double green = 0;
        double blue = 0;
        double alpha = 0;
    };

    Tone toneOf(const QColor& colour)
    {
        const double alpha = double(colour.alphaF());
        return {double(colour.redF()) * alpha, double(colour.greenF()) * alpha, double(colour.blueF()) * alpha, alpha};
    }

    Tone mixed(const Tone& from, const Tone& to, double share)
    {
        const auto mix = [share](double a, double b) { return a + (b - a) * share; };
        return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue), mix(from.alpha, to.alpha)};
    }

    void lay(Tone& under, const Tone& over, double coverage)
    {
        const double rest = 1 - over.alpha * coverage;
        under = {over.red * coverage + under.red * rest, over.green * coverage + under.green * rest,
            over.blue * coverage + under.blue * rest, over.alpha * coverage + under.alpha * rest};
    }

    QRgb pixelOf(const Tone& tone)
    {
        const auto part = [](double value) { return int(std::lround(std::clamp(value, 0.0, 1.0) * 255)); };
        return qRgba(part(tone.red), part(tone.green), part(tone.blue), part(tone.alpha));
    }

    /// A rounded rectangle with soft or hard edges, in device pixels.
    struct Outline {
        QRectF box;
        double radius = 0;
        double deviation = 0;

        /// Below 0 within, above 0 beyond, in pixels.
        [[nodiscard]] double distance(double x, double y) const
        {
            const double right = std::abs(x - box.center().x()) - box.width() / 2 + radius;
            const double below = std::abs(y - box.center().y()) - box.height() / 2 + radius;
            return std::min(std::max(right, below), 0.0) + std::hypot(std::max(right, 0.0), std::max(below, 0.0))
                - radius;
        }

        /// How much of a pixel the outline covers: exact for hard edges; for soft ones, that of a straight bar as thick
        /// as the shorter side, which also dims the glow of a thin lamp.
        [[nodiscard]] double coverage(double x, double y) const
        {
            const double away = distance(x, y);
            if (deviation <= 0) {
                return std::clamp(0.5 - away, 0.0, 1.0);
            }
            if (away > 3 * deviation) {
                return 0;
            }
            const double scale = 1 / (deviation * std::numbers::sqrt2);
            const double thickness = std::min(box.width(), box.height());
            return (std::erfc(away * scale) - std::erfc((away + thickness) * scale)) / 2;
        }
    };

    /// A shade, ready to be laid on pixels.
    struct Layer {
        Shade::Side side = Shade::Side::outside;
        Outline outline;
        Tone tone;
    };

    double held(double radius, const QRectF& box)
    {
        return std::clamp(radius, 0.0, std::max(std::min(box.width(), box.height()) / 2, 0.0));
    }

    Layer layerOf(const Shade& shade, const QRectF& box, double radius, double ratio)
    {
        // A hard line as wide as one and a half pixels would be grey at one edge.
        const auto pixels = [&shade, ratio](double points) {
            if (shade.blur > 0 || points == 0) {
                return points * ratio;
            }
            return std::copysign(std::max(1.0, std::round(std::abs(points) * ratio)), points);
        };
        const double spread = pixels(shade.spread);
        const double growth = shade.side == Shade::Side::outside ? spread : -spread;
        const QRectF grown =
            box.adjusted(-growth, -growth, growth, growth).translated(pixels(shade.across), pixels(shade.down));
        return {shade.side, {grown, held(radius + growth, grown), shade.blur * ratio / 2}, toneOf(shade.colour)};
    }

    /// How far a shade reaches from the outline, in points.
    double reachOf(const Shade& shade)
    {
        return std::max(std::abs(shade.across), std::abs(shade.down)) + std::abs(shade.spread) + 1.5 * shade.blur;
    }

    double reach(const std::vector<Shade>& shades, Shade::Side side)
    {
        double farthest = 0;
        for (const Shade& shade : shades) {
            if (shade.side == side) {
                farthest = std::max(farthest, reachOf(shade));
            }
        }
        return farthest;
    }

    /// The gradient of a surface, by place within its box.
    class Gradient {
    public:
        Gradient(const SurfaceLook& look, const QRectF& box) : m_direction(look.direction), m_box(box)
        {
            for (const FillStop& stop : look.fill) {
                m_stops.push_back({stop.at, toneOf(stop.colour)});
            }
        }

        [[nodiscard]] Tone at(double x, double y) const
        {
            const double place = placeOf((x - m_box.left()) / m_box.width(), (y - m_box.top()) / m_box.height());
            if (place <= m_stops.front().at) {
                return m_stops.front().tone;
            }
            for (std::size_t index = 1; index < m_stops.size(); ++index) {
                const Stop& before = m_stops[index - 1];
                const Stop& after = m_stops[index];
                if (place < after.at) {
                    return mixed(before.tone, after.tone, (place - before.at) / (after.at - before.at));
                }
            }
            return m_stops.back().tone;
        }

    private:
        struct Stop {
            double at = 0;
            Tone tone;
        };

        [[nodiscard]] double placeOf(double across, double down) const
        {
            switch (m_direction) {
            case SurfaceLook::Fill::across:
                return across;
            case SurfaceLook::Fill::lens:
                // The spot stands at 45 and 38 percent; the farthest corner is the gradient's end.
                return std::hypot(across - 0.45, down - 0.38) / std::hypot(0.55, 0.62);
            case SurfaceLook::Fill::down:
                break;
            }
            return down;
        }

        SurfaceLook::Fill m_direction;
        QRectF m_box;
        std::vector<Stop> m_stops;
    };

    QRgb pixelAt(double x, double y, const Outline& body, const Gradient& gradient, const std::vector<Layer>& layers)
    {
        const double covered = body.coverage(x, y);
        Tone around;
        Tone surface;
        if (covered > 0) {
            surface = gradient.at(x, y);
        }
        for (const auto& layer : std::views::reverse(layers)) {
            if (layer.side == Shade::Side::outside) {
                if (covered < 1) {
                    lay(around, layer.tone, layer.outline.coverage(x, y));
                }
            } else if (covered > 0) {
                lay(surface, layer.tone, 1 - layer.outline.coverage(x, y));
            }
        }
        return pixelOf(mixed(around, surface, covered));
    }

}  // namespace

Picture surfacePicture(QSizeF size, const SurfaceLook& look, double ratio)
{
    const int width = int(std::lround(size.width() * ratio));
    const int height = int(std::lround(size.height() * ratio));
    if (width <= 0 || height <= 0 || look.fill.empty()) {
        return {};
    }
    const int margin = int(std::ceil(reach(look.shades, Shade::Side::outside) * ratio)) + 1;
    const QRectF box(margin, margin, width, height);
    const double radius = held(look.radius * ratio, box);
    const Outline body{box, radius, 0};
    const Gradient gradient(look, box);
    std::vector<Layer> layers;
    layers.reserve(look.shades.size());
    for (const Shade& shade : look.shades) {
        layers.push_back(layerOf(shade, box, radius, ratio));
    }

    QImage image(width + 2 * margin, height + 2 * margin, QImage::Format_ARGB32_Premultiplied);
    // Between the two ends a row of a surface that is filled downwards has one colour.
    const double soft = std::max(reach(look.shades, Shade::Side::inside), reach(look.shades, Shade::Side::outside));
    const int end = margin + int(std::ceil(radius + soft * ratio)) + 1;
    const bool hasMiddle = look.direction == SurfaceLook::Fill::down && image.width() > 2 * end;
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (hasMiddle && x == end) {
                const QRgb middle = pixelAt(x + 0.5, y + 0.5, body, gradient, layers);
                std::fill(row + end, row + image.width() - end, middle);
                x = image.width() - end;
            }
            row[x] = pixelAt(x + 0.5, y + 0.5, body, gradient, layers);
        }
    }
    return {image, {-margin, -margin}};
}

Picture crossfade(const Picture& from, const Picture& to, double share)
{
    if (share <= 0 || to.image.isNull()) {
        return from;
    }
    if (share >= 1 || from.image.isNull()) {
        return to;
    }
    const QRect area = QRect(from.origin, from.image.size()).united(QRect(to.origin, to.image.size()));
    const auto thinned = [&area](const Picture& picture, double opacity) {
        QImage image(area.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setOpacity(opacity);
        painter.drawImage(picture.origin - area.topLeft(), picture.image);
        return image;
    };
    // Added at full opacity: with a share of it, the painter would hold the sum of both to the brightest first.
    QImage image = thinned(from, 1 - share);
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_Plus);
    painter.drawImage(QPoint(0, 0), thinned(to, share));
    painter.end();
    return {image, area.topLeft()};
}

}  // namespace vantiro
