// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/TurningBand.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace vantiro {

namespace {

    constexpr double fullTurn = 2 * std::numbers::pi;
    constexpr int fineness = 3;        ///< Of the picture that the band is taken from, to the canvas.
    constexpr int texelsPerPixel = 4;  ///< Fine enough to take the nearest one.

    /// The mean of a pixel of the canvas, as edges are smoothed when they are painted.
    QRgb meanAround(const QImage& fine, double x, double y)
    {
        constexpr int reach = fineness / 2;
        constexpr unsigned count = fineness * fineness;
        const int left = std::clamp(static_cast<int>(std::floor(x)) - reach, 0, fine.width() - fineness);
        const int top = std::clamp(static_cast<int>(std::floor(y)) - reach, 0, fine.height() - fineness);
        unsigned alpha = 0;
        unsigned red = 0;
        unsigned green = 0;
        unsigned blue = 0;
        for (int row = top; row < top + fineness; ++row) {
            const auto* line = reinterpret_cast<const QRgb*>(fine.constScanLine(row)) + left;
            for (int i = 0; i < fineness; ++i) {
                alpha += static_cast<unsigned>(qAlpha(line[i]));
                red += static_cast<unsigned>(qRed(line[i]));
                green += static_cast<unsigned>(qGreen(line[i]));
                blue += static_cast<unsigned>(qBlue(line[i]));
            }
        }
        const auto mean = [](unsigned sum) { return static_cast<int>((sum + count / 2) / count); };
        return qRgba(mean(red), mean(green), mean(blue), mean(alpha));
    }

}  // namespace

void TurningBand::prepare(const Place& place, const std::function<void(QPainter&)>& paint)
{
    m_texels.clear();
    m_pixels.clear();
    const int reach = static_cast<int>(std::ceil(place.outer)) + 2;
    QImage fine(2 * reach * fineness, 2 * reach * fineness, QImage::Format_ARGB32_Premultiplied);
    if (fine.isNull() || place.outer <= place.inner) {
        return;
    }
    fine.fill(Qt::transparent);
    QPainter painter(&fine);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(reach * fineness, reach * fineness);
    painter.scale(fineness, fineness);
    paint(painter);
    painter.end();

    m_columns = std::bit_ceil(static_cast<unsigned>(fullTurn * place.outer * texelsPerPixel));
    const auto rows = static_cast<std::size_t>(std::ceil((place.outer - place.inner) * texelsPerPixel)) + 1;
    m_texels.reserve(rows * m_columns);
    for (std::size_t row = 0; row < rows; ++row) {
        const double radius = (place.inner + double(row) / texelsPerPixel) * fineness;
        for (unsigned column = 0; column < m_columns; ++column) {
            const double angle = fullTurn * column / m_columns;
            m_texels.push_back(meanAround(
                fine, reach * fineness + radius * std::cos(angle), reach * fineness + radius * std::sin(angle)));
        }
    }

    for (int y = 0; y < place.canvas.height(); ++y) {
        for (int x = 0; x < place.canvas.width(); ++x) {
            const QPointF from = QPointF(x + 0.5, y + 0.5) - place.centre;
            const double radius = std::hypot(from.x(), from.y());
            const auto row = std::lround((radius - place.inner) * texelsPerPixel);
            if (row < 0 || std::size_t(row) >= rows) {
                continue;
            }
            const double angle = std::atan2(from.y(), from.x()) / fullTurn + 1;
            m_pixels.push_back({.offset = std::size_t(y) * std::size_t(place.canvas.width()) + std::size_t(x),
                .row = std::size_t(row) * m_columns,
                .column = static_cast<unsigned>(std::lround(angle * m_columns)) & (m_columns - 1)});
        }
    }
}

void TurningBand::draw(QImage& canvas, const QImage& ground, double turns) const
{
    if (m_pixels.empty()) {
        return;
    }
    const double share = turns - std::floor(turns);
    const unsigned shift = m_columns - (static_cast<unsigned>(std::lround(share * m_columns)) & (m_columns - 1));
    auto* to = reinterpret_cast<QRgb*>(canvas.bits());
    const auto* from = reinterpret_cast<const QRgb*>(ground.constBits());
    for (const Pixel& pixel : m_pixels) {
        const QRgb texel = m_texels[pixel.row + ((pixel.column + shift) & (m_columns - 1))];
        to[pixel.offset] = texel == 0 ? from[pixel.offset] : blendedOver(texel, from[pixel.offset]);
    }
}

}  // namespace vantiro
