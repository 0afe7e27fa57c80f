// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/StripPainter.h"

#include "app/model/MeterLevels.h"
#include "app/paint/Brushwork.h"
#include "app/paint/LevelScale.h"
#include "app/paint/Palette.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vantiro {

namespace {

    using palette::faded;

    constexpr double historyLength = 600;
    constexpr double fullHeight = 0.96;
    constexpr double falloff = 26;  ///< dB in which a bar shrinks to a tenth: the loud end takes most of the height.

    /// Half the height of a level's bar, as a share of the strip's height.
    double barReach(double levelDB)
    {
        return 0.5 * fullHeight * std::pow(10, std::min(levelDB, 0.0) / falloff);
    }

    QImage ground(QSize pixels, int line)
    {
        QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        for (const int levelDB : {-20, -10, -3}) {
            const QColor colour = levelDB == -3 ? faded(palette::amber, 0.16) : faded(palette::ink, 0.06);
            const int away = static_cast<int>(std::lround(barReach(levelDB) * pixels.height()));
            painter.fillRect(0, pixels.height() / 2 - away, pixels.width(), line, colour);
            painter.fillRect(0, pixels.height() / 2 + away - line, pixels.width(), line, colour);
        }
        return image;
    }

    void fillColumn(QImage& image, int left, int right, double levelDB)
    {
        const int height = image.height();
        const bool isHeard = levelDB > double{meterFloorDB};
        const QColor colour = isHeard ? Brushwork::toneColour(LevelScale::toneOf(levelDB)) : faded(palette::dim, 0.35);
        const int half = isHeard ? static_cast<int>(std::lround(barReach(levelDB) * height)) : 0;
        const QRgb pixel = qPremultiply(colour.rgba());
        for (int y = std::max(0, height / 2 - std::max(half, 1)); y < height / 2 + half; ++y) {
            auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
            std::fill(row + left, row + right, pixel);
        }
    }

}  // namespace

QImage StripPainter::picture(QSizeF size, std::span<const float> history, double ratio)
{
    const QSize pixels = (size * ratio).toSize();
    if (pixels.isEmpty()) {
        return {};
    }
    const int line = std::max(1, static_cast<int>(std::lround(ratio / 2)));
    if (m_ground.size() != pixels) {
        m_ground = ground(pixels, line);
    }
    QImage image = m_ground;
    const int pitch = std::max(1, static_cast<int>(std::lround(pixels.width() / historyLength)));
    const int bar = pitch > 1 ? pitch - std::max(1, pitch / 3) : 1;
    int left = pixels.width() - pitch;
    for (auto value = history.rbegin(); value != history.rend() && left >= 0; ++value, left -= pitch) {
        fillColumn(image, left, left + bar, double{*value});
    }
    image.setDevicePixelRatio(ratio);
    return image;
}

}  // namespace vantiro
