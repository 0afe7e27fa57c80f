// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DeckBitmap.h"

#include <cmath>

namespace vantiro {

namespace {

    constexpr double largestSide = 16'384;  ///< Device pixels; more is a mistake rather than a screen.

}  // namespace

QRectF DeckBitmap::snapped(const QRectF& area, double ratio)
{
    const QPointF topLeft(std::floor(area.left() * ratio), std::floor(area.top() * ratio));
    const QPointF bottomRight(std::ceil(area.right() * ratio), std::ceil(area.bottom() * ratio));
    return {topLeft / ratio, bottomRight / ratio};
}

const QImage* DeckBitmap::picture(const Subject& subject, const Paint& paint)
{
    if (m_image && m_subject == subject) {
        return &*m_image;
    }
    m_image.reset();
    const QRectF area = snapped(subject.area, subject.ratio);
    const QSizeF pixels = area.size() * subject.ratio;
    if (!(pixels.width() >= 1 && pixels.height() >= 1 && pixels.width() <= largestSide
            && pixels.height() <= largestSide)) {
        return nullptr;
    }
    QImage image(qRound(pixels.width()), qRound(pixels.height()), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return nullptr;
    }
    image.setDevicePixelRatio(subject.ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-area.topLeft());
    paint(painter);
    painter.end();
    m_subject = subject;
    m_image = std::move(image);
    return &*m_image;
}

void DeckBitmap::draw(QPainter& painter, const Subject& subject, const Paint& paint)
{
    if (const QImage* image = picture(subject, paint)) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(snapped(subject.area, subject.ratio).topLeft(), *image);
    }
}

}  // namespace vantiro
