// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/PaintedText.h"

#include "app/paint/Palette.h"
#include "app/paint/Typeface.h"

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>
#include <utility>

namespace vantiro {

namespace {

    // Room for the engraved edges and for letters that lean out of their cell, in points.
    constexpr int textMargin = 2;

}  // namespace

PaintedText::PaintedText(QQuickItem* parent) : PictureItem(parent), m_color(palette::ink)
{
    connect(this, &PaintedText::changed, this, &PaintedText::measure);
    measure();
}

QPainterPath PaintedText::words(QPointF place) const
{
    const Typeface::Style style{.size = double(m_pixelSize), .weight = QFont::Weight(m_weight), .tracking = m_tracking};
    return m_digits == Tabular ? Typeface::tabular(m_text, style, place, Typeface::Align::left)
                               : Typeface::outline(m_text, style, place, Typeface::Align::left);
}

void PaintedText::measure()
{
    QFont font(Typeface::family());
    font.setPixelSize(m_pixelSize);
    font.setWeight(QFont::Weight(m_weight));
    const QFontMetricsF metrics(font);
    const Typeface::Style style{.size = double(m_pixelSize), .weight = QFont::Weight(m_weight), .tracking = m_tracking};
    double width = m_text.isEmpty() ? 0 : Typeface::width(m_text, style);
    if (m_digits == Tabular) {
        width = 0;
        for (const QChar character : std::as_const(m_text)) {
            width += character.isDigit() ? Typeface::digitCell * m_pixelSize : metrics.horizontalAdvance(character);
        }
    }
    setImplicitSize(std::ceil(width), std::ceil(metrics.height()));
    setBaselineOffset(std::round(metrics.ascent()));
    repaint();
}

Picture PaintedText::picture(double ratio) const
{
    if (m_text.isEmpty()) {
        return {};
    }
    const int margin = int(std::ceil(textMargin * ratio));
    QImage image(int(std::ceil(width() * ratio)) + 2 * margin, int(std::ceil(height() * ratio)) + 2 * margin,
        QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(margin, margin);
    painter.scale(ratio, ratio);
    const QPainterPath path = words(QPointF(0, baselineOffset()));
    if (m_finish == Engraved) {
        Typeface::engrave(painter, path, m_color, ratio);
    } else {
        painter.fillPath(path, m_color);
    }
    painter.end();
    return {image, {-margin, -margin}};
}

}  // namespace vantiro
