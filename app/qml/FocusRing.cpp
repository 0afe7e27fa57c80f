// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/FocusRing.h"

#include "app/paint/Palette.h"

#include <QPainter>
#include <QPen>

#include <cmath>

namespace vantiro {

FocusRing::FocusRing(QQuickItem* parent) : PictureItem(parent)
{
    connect(this, &FocusRing::radiusChanged, this, &FocusRing::repaint);
}

Picture FocusRing::picture(double ratio) const
{
    const QSize pixels(int(std::lround(width() * ratio)), int(std::lround(height() * ratio)));
    if (pixels.isEmpty()) {
        return {};
    }
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const double line = 1.5 * ratio;
    painter.setPen(QPen(palette::lime, line));
    const double half = line / 2;
    const double radius = m_radius * ratio - half;
    painter.drawRoundedRect(QRectF(image.rect()).adjusted(half, half, -half, -half), radius, radius);
    painter.end();
    return {image, {}};
}

}  // namespace vantiro
