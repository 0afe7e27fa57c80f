// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/Faceplate.h"

#include "app/paint/SurfaceColours.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vantiro {

void Faceplate::setGrain(bool grain)
{
    if (m_grain != grain) {
        m_grain = grain;
        repaint();
        Q_EMIT grainChanged();
    }
}

QImage Faceplate::grainTile(double ratio)
{
    const int side = int(std::lround(128 * ratio));
    QImage tile(side, side, QImage::Format_ARGB32_Premultiplied);
    const QRgb bright = qPremultiply(palette::faded(palette::light, 0.027).rgba());
    const QRgb shaded = qPremultiply(palette::faded(palette::dark, 0.15).rgba());
    std::uint32_t state = 7;
    for (int y = 0; y < side; ++y) {
        auto* row = reinterpret_cast<QRgb*>(tile.scanLine(y));
        for (int x = 0; x < side; ++x) {
            state = state * 1664525U + 1013904223U;
            const double drawn = double(state) / 4294967296.0;
            row[x] = drawn < 0.16 ? bright : drawn > 0.86 ? shaded : 0;
        }
    }
    return tile;
}

Picture Faceplate::picture(double ratio) const
{
    const QSize pixels(int(std::lround(width() * ratio)), int(std::lround(height() * ratio)));
    if (pixels.isEmpty()) {
        return {};
    }
    QImage image(pixels, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient metal(0, 0, 0, pixels.height());
    // The light from above ends 120 points down, however high the window is.
    metal.setColorAt(0, palette::faceGradient[0]);
    metal.setColorAt(std::min(120 / height(), 0.59), palette::faceGradient[1]);
    metal.setColorAt(0.6, palette::faceGradient[2]);
    metal.setColorAt(1, palette::faceGradient[3]);
    painter.fillRect(image.rect(), metal);
    if (m_grain) {
        painter.fillRect(image.rect(), QBrush(grainTile(ratio)));
    }
    const int line = std::max(1, int(std::lround(ratio)));
    const QRect inner = image.rect().adjusted(line, line, -line, -line);
    const QColor around = palette::faded(palette::light, 0.055);
    painter.fillRect(QRect(0, 0, pixels.width(), line), palette::faded(palette::light, 0.18));
    painter.fillRect(QRect(0, inner.bottom() + 1, pixels.width(), line), around);
    painter.fillRect(QRect(0, line, line, inner.height()), around);
    painter.fillRect(QRect(inner.right() + 1, line, line, inner.height()), around);
    painter.end();
    return {image, {}};
}

}  // namespace vantiro
