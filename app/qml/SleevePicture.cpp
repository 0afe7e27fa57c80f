// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/SleevePicture.h"

#include "app/paint/SurfaceColours.h"

#include <QLinearGradient>
#include <QPainter>

#include <cmath>

namespace vantiro {

namespace {

    constexpr QPointF centre{204, 89};

    void ring(QPainter& painter, double radius, double width, const QColor& colour)
    {
        painter.setPen(QPen(colour, width));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(centre, radius, radius);
    }

    void disc(QPainter& painter, double radius, const QColor& colour)
    {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawEllipse(centre, radius, radius);
    }

    void paintRecord(QPainter& painter)
    {
        disc(painter, 66, palette::metal(8));
        for (double radius = 28; radius < 66; radius += 2.2) {
            ring(painter, radius, 0.5, palette::faded(palette::light, 0.07));
        }
        ring(painter, 65.5, 1, palette::faded(palette::light, 0.2));
        disc(painter, 24, palette::paperTop);
        ring(painter, 23, 1.2, palette::lime);
        disc(painter, 2.5, palette::plateSlot);
    }

    void paintSleeve(QPainter& painter)
    {
        QLinearGradient card(0, 12, 0, 164);
        card.setColorAt(0, palette::keyGradient[0]);
        card.setColorAt(1, palette::keyGradient[1]);
        painter.setBrush(card);
        painter.setPen(QPen(palette::faded(palette::light, 0.14), 1));
        painter.drawRoundedRect(QRectF(58.5, 12.5, 145, 151), 4, 4);
        for (int mark = 0; mark < 27; ++mark) {
            painter.fillRect(QRectF(78 + 4 * mark, 87, 2.4, 2), palette::faded(palette::dim, 0.55));
        }
    }

}  // namespace

SleevePicture::SleevePicture(QQuickItem* parent) : PictureItem(parent)
{
    setImplicitSize(300, 170);
}

Picture SleevePicture::picture(double ratio) const
{
    const QSize pixels(int(std::ceil(width() * ratio)), int(std::ceil(height() * ratio)));
    if (pixels.isEmpty()) {
        return {};
    }
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(ratio, ratio);
    paintRecord(painter);
    paintSleeve(painter);
    painter.end();
    return {image, {}};
}

}  // namespace vantiro
