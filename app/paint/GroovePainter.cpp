// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/GroovePainter.h"

#include "app/paint/Brushwork.h"
#include "app/paint/Palette.h"
#include "app/paint/TurningBand.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vantiro {

namespace {

    using LevelScale::Tone;

    constexpr double grooveReach = 0.016;  ///< Of wobble and halo beyond the spiral.
    constexpr double haloWidth = 0.015;

    /// A colour at every coverage, premultiplied.
    using Tints = std::array<QRgb, 256>;

    Tints tintsOf(const QColor& colour, double opacity)
    {
        Tints tints{};
        for (int i = 0; i < 256; ++i) {
            tints.at(std::size_t(i)) = qPremultiply(
                qRgba(colour.red(), colour.green(), colour.blue(), static_cast<int>(std::lround(opacity * i))));
        }
        return tints;
    }

    struct Ink {
        double width = 0;  ///< In terms of the deck's size.
        Tints line{};
        bool hasHalo = false;
        Tints halo{};
    };

    const Ink& inkOf(std::size_t style)
    {
        static const auto inks = [] {
            std::array<Ink, Groove::styleCount> made;
            for (std::size_t i = 0; i < made.size(); ++i) {
                const auto [tone, isFaded] = Groove::styleAt(i);
                const QColor colour = Brushwork::toneColour(tone);
                const bool isQuiet = tone == Tone::quiet;
                made.at(i) = {.width = isQuiet ? 0.0044 : 0.0058,
                    .line = tintsOf(isQuiet ? palette::quietGroove : colour, isFaded ? 0.5 : 0.95),
                    .hasHalo = tone >= Tone::warning,
                    .halo = tintsOf(colour, isFaded ? 0.07 : 0.13)};
            }
            return made;
        }();
        return inks.at(style);
    }

}  // namespace

void GroovePainter::prepare(const DeckGeometry& geometry, QSize canvas, QPointF corner, double ratio)
{
    m_geometry = geometry;
    m_corner = corner;
    m_ratio = ratio;
    m_line = QImage(canvas, QImage::Format_ARGB32_Premultiplied);
    m_line.fill(Qt::transparent);
    m_spans.clear();
    const QPointF centre = onCanvas(geometry.centre());
    const double outer = (geometry.needleRadius() + geometry.of(grooveReach)) * ratio;
    const double inner = geometry.innerGrooveRadius() * ratio;
    for (int y = 0; y < canvas.height(); ++y) {
        const double away = y + 0.5 - centre.y();
        if (std::abs(away) >= outer) {
            continue;
        }
        const double half = std::sqrt(outer * outer - away * away);
        const double hole = std::abs(away) < inner ? std::sqrt(inner * inner - away * away) : 0;
        const auto add = [&](double from, double to) {
            const int left = std::clamp(static_cast<int>(std::floor(from)), 0, canvas.width());
            const int right = std::clamp(static_cast<int>(std::ceil(to)), left, canvas.width());
            const std::size_t row = std::size_t(y) * std::size_t(canvas.width());
            m_spans.push_back({.begin = row + std::size_t(left), .end = row + std::size_t(right)});
        };
        add(centre.x() - half, centre.x() - hole);
        add(centre.x() + hole, centre.x() + half);
    }
}

QPointF GroovePainter::onCanvas(QPointF point) const
{
    return (point - m_corner) * m_ratio;
}

void GroovePainter::draw(QImage& canvas, const QImage& ground, std::span<const Groove::Point> points)
{
    if (m_line.isNull()) {
        return;
    }
    strokeLines(points);
    auto* line = reinterpret_cast<QRgb*>(m_line.bits());
    auto* to = reinterpret_cast<QRgb*>(canvas.bits());
    const auto* from = reinterpret_cast<const QRgb*>(ground.constBits());
    for (const Span& span : m_spans) {
        for (std::size_t i = span.begin; i < span.end; ++i) {
            to[i] = line[i] == 0 ? from[i] : blendedOver(line[i], from[i]);
        }
        std::fill(line + span.begin, line + span.end, 0);
    }
}

/// Curves through the middles between points, as straight joints look like noise, each as two straight pieces.
void GroovePainter::strokeLines(std::span<const Groove::Point> points)
{
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        const Groove::Point& point = points[i];
        if (!points[i - 1].isHeard || !point.isHeard || !points[i + 1].isHeard) {
            continue;
        }
        const Ink& ink = inkOf(Groove::styleOf(point));
        const QPointF before = onCanvas((points[i - 1].at + point.at) / 2);
        const QPointF after = onCanvas((point.at + points[i + 1].at) / 2);
        const QPointF bend = (before + 2 * onCanvas(point.at) + after) / 4;
        if (ink.hasHalo) {
            strokeLine(before, after, m_geometry.of(haloWidth) * m_ratio, ink.halo);
        }
        const double width = m_geometry.of(ink.width) * m_ratio;
        strokeLine(before, bend, width, ink.line);
        strokeLine(bend, after, width, ink.line);
    }
}

/// Where lines meet the stronger one stays, so that neither joints nor halos add up.
void GroovePainter::strokeLine(QPointF from, QPointF to, double width, std::span<const QRgb> tints)
{
    const auto edge = static_cast<float>(width / 2 + 0.5);
    const double grown = double{edge};
    const int left = std::max(0, static_cast<int>(std::floor(std::min(from.x(), to.x()) - grown)));
    const int right = std::min(m_line.width(), static_cast<int>(std::ceil(std::max(from.x(), to.x()) + grown)));
    const int top = std::max(0, static_cast<int>(std::floor(std::min(from.y(), to.y()) - grown)));
    const int bottom = std::min(m_line.height(), static_cast<int>(std::ceil(std::max(from.y(), to.y()) + grown)));
    const auto alongX = static_cast<float>(to.x() - from.x());
    const auto alongY = static_cast<float>(to.y() - from.y());
    const float squared = std::max(alongX * alongX + alongY * alongY, 1e-6F);
    auto* row = reinterpret_cast<QRgb*>(m_line.bits()) + std::ptrdiff_t{top} * m_line.width();
    for (int y = top; y < bottom; ++y, row += m_line.width()) {
        const auto awayY = static_cast<float>(y + 0.5 - from.y());
        for (int x = left; x < right; ++x) {
            const auto awayX = static_cast<float>(x + 0.5 - from.x());
            const float share = std::clamp((awayX * alongX + awayY * alongY) / squared, 0.0F, 1.0F);
            const float restX = awayX - share * alongX;
            const float restY = awayY - share * alongY;
            const float distance = restX * restX + restY * restY;
            if (distance >= edge * edge) {
                continue;
            }
            const float coverage = std::min(edge - std::sqrt(distance), 1.0F);
            const QRgb tint = tints[static_cast<std::size_t>(coverage * 255)];
            if (qAlpha(tint) > qAlpha(row[x])) {
                row[x] = tint;
            }
        }
    }
}

}  // namespace vantiro
