// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QPainter>
#include <QPointF>
#include <QSize>

#include <cstddef>
#include <functional>
#include <vector>

namespace vantiro {

/// A band around a centre that only turns: painted once, kept by angle and radius, and looked up pixel by pixel at any
/// turn. It stays as sharp as painted, and costs a fraction of turning a picture.
class TurningBand {
public:
    /// In device pixels of the canvas that it is drawn onto.
    struct Place {
        QSize canvas;
        QPointF centre;
        double inner = 0;
        double outer = 0;
    };

    /// Takes what `paint` draws around (0, 0) in device pixels.
    void prepare(const Place& place, const std::function<void(QPainter&)>& paint);
    /// Draws it over `ground`, clockwise by `turns`, where the band lies. All of both is opaque and as large as the
    /// canvas.
    void draw(QImage& canvas, const QImage& ground, double turns) const;

private:
    /// A pixel of the canvas, and where it is found in the band that has not turned.
    struct Pixel {
        std::size_t offset;
        std::size_t row;
        unsigned column;
    };

    unsigned m_columns = 0;  ///< A power of two.
    std::vector<QRgb> m_texels;
    std::vector<Pixel> m_pixels;
};

/// `source`, premultiplied, over the opaque `ground`.
[[nodiscard]] constexpr QRgb blendedOver(QRgb source, QRgb ground)
{
    const QRgb rest = 255 - (source >> 24);
    QRgb odd = (ground & 0x00FF00FFU) * rest;
    odd = (odd + ((odd >> 8) & 0x00FF00FFU) + 0x00800080U) >> 8 & 0x00FF00FFU;
    QRgb even = (ground >> 8 & 0x00FF00FFU) * rest;
    even = (even + ((even >> 8) & 0x00FF00FFU) + 0x00800080U) & 0xFF00FF00U;
    return source + (odd | even);
}

}  // namespace vantiro
