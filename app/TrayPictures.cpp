// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TrayPictures.h"

#include "app/paint/SurfaceColours.h"

#include <QImage>
#include <QPainter>
#include <QtEndian>

namespace vantiro {

namespace {

    constexpr double unit = 24;  ///< The pictures are drawn on a field of this side.

    void drawSymbol(QPainter& painter, TraySymbol symbol)
    {
        painter.setPen(Qt::NoPen);
        switch (symbol) {
        case TraySymbol::record:
            painter.setBrush(palette::red);
            painter.drawEllipse(QPointF(12, 12), 4.75, 4.75);
            return;
        case TraySymbol::stop:
            painter.setBrush(palette::red);
            painter.drawRoundedRect(QRectF(7.75, 7.75, 8.5, 8.5), 1, 1);
            return;
        case TraySymbol::attention:
            painter.setBrush(palette::amber);
            painter.drawRoundedRect(QRectF(10.9, 6.5, 2.2, 7), 1.1, 1.1);
            painter.drawEllipse(QPointF(12, 16.2), 1.4, 1.4);
            return;
        }
    }

    TrayPicture draw(TraySymbol symbol, int side)
    {
        QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(side / unit, side / unit);
        painter.setPen(QPen(symbol == TraySymbol::attention ? palette::amber : palette::ink, 1.6));
        painter.setBrush(palette::raised);
        painter.drawEllipse(QPointF(12, 12), 9.7, 9.7);
        drawSymbol(painter, symbol);
        painter.end();

        image = image.convertToFormat(QImage::Format_ARGB32);
        TrayPicture picture{.side = side, .pixels = QByteArray(qsizetype{side} * side * 4, Qt::Uninitialized)};
        for (int row = 0; row < side; ++row) {
            qToBigEndian<quint32>(image.constScanLine(row), side, picture.pixels.data() + qsizetype{row} * side * 4);
        }
        return picture;
    }

}  // namespace

std::vector<TrayPicture> trayPictures(TraySymbol symbol)
{
    std::vector<TrayPicture> pictures;
    for (const int side : {16, 22, 24, 32, 44, 48}) {
        pictures.push_back(draw(symbol, side));
    }
    return pictures;
}

}  // namespace vantiro
