// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/Brushwork.h"

#include "app/paint/Palette.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace vantiro::Brushwork {

namespace {

    constexpr int tilePoints = 128;
    constexpr std::uint32_t grainSeed = 7;

    QBrush brushOf(QGradient& gradient, Stops stops, double inner, double outer)
    {
        gradient.setInterpolationMode(QGradient::ComponentInterpolation);
        for (const auto& [place, colour] : stops) {
            gradient.setColorAt(std::clamp((inner + place * (outer - inner)) / outer, 0.0, 1.0), colour);
        }
        return gradient;
    }

    /// A number from 0 to 1, the same row for the same seed. The low bits are mixed in, as without them neighbouring
    /// specks would form a weave.
    double nextChance(std::uint32_t& state)
    {
        state = state * 1'664'525U + 1'013'904'223U;
        std::uint32_t mixed = (state ^ state >> 16) * 0x7FEB352DU;
        mixed = (mixed ^ mixed >> 15) * 0x846CA68BU;
        return double(mixed ^ mixed >> 16) / 4'294'967'296.0;
    }

    /// One blur along the rows, the result turned over so that a second one blurs along the columns.
    /// The place of a pixel in rows of `width`.
    std::size_t pixelAt(int row, int width, int column)
    {
        return std::size_t(row) * std::size_t(width) + std::size_t(column);
    }

    void blurRows(
        const std::vector<float>& from, std::vector<float>& to, int width, int height, const std::vector<float>& kernel)
    {
        const int reach = static_cast<int>(kernel.size() / 2);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                float sum = 0;
                for (int k = std::max(-reach, -x); k <= std::min(reach, width - 1 - x); ++k) {
                    sum += from[pixelAt(y, width, x + k)] * kernel[pixelAt(0, 0, k + reach)];
                }
                to[pixelAt(x, height, y)] = sum;
            }
        }
    }

}  // namespace

QBrush linear(QPointF from, QPointF to, Stops stops)
{
    QLinearGradient gradient(from, to);
    return brushOf(gradient, stops, 0, 1);
}

QBrush falling(double top, double bottom, Stops stops)
{
    return linear({0, top}, {0, bottom}, stops);
}

QBrush across(double left, double right, Stops stops)
{
    return linear({left, 0}, {right, 0}, stops);
}

QBrush radial(QPointF centre, double inner, double outer, Stops stops)
{
    QRadialGradient gradient(centre, outer);
    return brushOf(gradient, stops, inner, outer);
}

void fillDisc(QPainter& painter, QPointF centre, double radius, const QBrush& brush)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(brush);
    painter.drawEllipse(centre, radius, radius);
}

void strokeRing(QPainter& painter, QPointF centre, double radius, double width, const QBrush& brush)
{
    painter.setPen(QPen(brush, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(centre, radius, radius);
}

void fillRounded(QPainter& painter, const QRectF& rect, double radius, const QBrush& brush)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(brush);
    painter.drawRoundedRect(rect, radius, radius);
}

void strokeRounded(QPainter& painter, const QRectF& rect, double radius, double width, const QBrush& brush)
{
    painter.setPen(QPen(brush, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(rect, radius, radius);
}

void strokePath(QPainter& painter, const QPainterPath& path, double width, const QBrush& brush, Qt::PenCapStyle cap,
    Qt::PenJoinStyle join)
{
    painter.strokePath(path, QPen(brush, width, Qt::SolidLine, cap, join));
}

QPainterPath arc(QPointF centre, double radius, double startDegrees, double spanDegrees)
{
    const QRectF circle(centre - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius));
    QPainterPath path;
    path.arcMoveTo(circle, -startDegrees);
    path.arcTo(circle, -startDegrees, -spanDegrees);
    return path;
}

QColor toneColour(LevelScale::Tone tone)
{
    switch (tone) {
    case LevelScale::Tone::quiet:
        return palette::quiet;
    case LevelScale::Tone::good:
        return palette::lime;
    case LevelScale::Tone::warning:
        return palette::amber;
    case LevelScale::Tone::clip:
        return palette::red;
    }
    return palette::quiet;
}

QImage grainTile(double ratio)
{
    const int side = qRound(tilePoints * ratio);
    QImage tile(side, side, QImage::Format_ARGB32);
    tile.fill(Qt::transparent);
    std::uint32_t state = grainSeed;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double chance = nextChance(state);
            if (chance < 0.16) {
                tile.setPixelColor(x, y, palette::faded(palette::light, 0.027));
            } else if (chance > 0.86) {
                tile.setPixelColor(x, y, palette::faded(palette::dark, 0.15));
            }
        }
    }
    tile.convertTo(QImage::Format_ARGB32_Premultiplied);
    tile.setDevicePixelRatio(ratio);
    return tile;
}

void grain(QPainter& painter, const QPainterPath& shape, double ratio)
{
    const QImage tile = grainTile(ratio);
    const double step = tile.width() / ratio;
    const QRectF bounds = shape.boundingRect();
    painter.save();
    painter.setClipPath(shape, Qt::IntersectClip);
    for (double y = std::floor(bounds.top() * ratio) / ratio; y < bounds.bottom(); y += step) {
        for (double x = std::floor(bounds.left() * ratio) / ratio; x < bounds.right(); x += step) {
            painter.drawImage(QPointF(x, y), tile);
        }
    }
    painter.restore();
}

QImage softShadow(const QImage& image, double deviation)
{
    const int reach = static_cast<int>(std::ceil(3 * deviation));
    if (reach < 1 || image.isNull()) {
        return image;
    }
    std::vector<float> kernel;
    double sum = 0;
    for (int k = -reach; k <= reach; ++k) {
        const double value = std::exp(-double(k) * k / (2 * deviation * deviation));
        kernel.push_back(static_cast<float>(value));
        sum += value;
    }
    for (float& value : kernel) {
        value /= static_cast<float>(sum);
    }
    const QImage opacity = image.convertToFormat(QImage::Format_Alpha8);
    const int width = opacity.width();
    const int height = opacity.height();
    std::vector<float> plane(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::vector<float> turned(plane.size());
    for (int y = 0; y < height; ++y) {
        const uchar* line = opacity.constScanLine(y);
        std::copy_n(line, width, plane.begin() + std::ptrdiff_t{y} * width);
    }
    blurRows(plane, turned, width, height, kernel);
    blurRows(turned, plane, height, width, kernel);
    QImage result(image.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < width; ++x) {
            line[x] = qRgba(0, 0, 0, static_cast<int>(std::lround(plane[pixelAt(y, width, x)])));
        }
    }
    result.setDevicePixelRatio(image.devicePixelRatio());
    return result;
}

}  // namespace vantiro::Brushwork
