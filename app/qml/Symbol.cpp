// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/Symbol.h"

#include "app/paint/Palette.h"

#include <QPainter>
#include <QPainterPath>
#include <QPen>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace vantiro {

namespace {

    /// Where a symbol is filled and where it is a line, on a grid of 16 points.
    struct SymbolPaths {
        QPainterPath filled;
        QPainterPath stroked;
        double width = 1.6;
    };

    void line(QPainterPath& path, std::initializer_list<QPointF> points)
    {
        const QPointF* point = points.begin();
        path.moveTo(*point);
        while (++point != points.end()) {
            path.lineTo(*point);
        }
    }

    SymbolPaths pathsOf(Symbol::Shape shape)
    {
        SymbolPaths paths;
        switch (shape) {
        case Symbol::None:
            break;
        case Symbol::Record:
            paths.filled.addEllipse(QPointF(8, 8), 4.8, 4.8);
            break;
        case Symbol::Stop:
            paths.filled.addRoundedRect(3.5, 3.5, 9, 9, 1, 1);
            break;
        case Symbol::Play:
            line(paths.filled, {{3.8, 2.8}, {13.3, 8}, {3.8, 13.2}, {3.8, 2.8}});
            break;
        case Symbol::Pause:
            paths.filled.addRect(3.5, 3, 3.2, 10);
            paths.filled.addRect(9.3, 3, 3.2, 10);
            break;
        case Symbol::UpDown:
            line(paths.stroked, {{4.5, 5.5}, {8, 2}, {11.5, 5.5}});
            line(paths.stroked, {{4.5, 10.5}, {8, 14}, {11.5, 10.5}});
            break;
        case Symbol::Speaker: {
            line(paths.filled, {{1.6, 6}, {4.2, 6}, {7.6, 2.8}, {7.6, 13.2}, {4.2, 10}, {1.6, 10}, {1.6, 6}});
            // From the mouth outwards.
            for (const double reach : {3.2, 6.2}) {
                const QRectF circle(7.4 - reach, 8 - reach, 2 * reach, 2 * reach);
                paths.stroked.arcMoveTo(circle, -45);
                paths.stroked.arcTo(circle, -45, 90);
            }
            paths.width = 1.4;
            break;
        }
        case Symbol::More:
            for (const double x : {3.0, 8.0, 13.0}) {
                paths.filled.addEllipse(QPointF(x, 8), 1.4, 1.4);
            }
            break;
        case Symbol::Share:
            line(paths.stroked, {{8, 10}, {8, 2.2}});
            line(paths.stroked, {{5, 5}, {8, 2.2}, {11, 5}});
            line(paths.stroked, {{5, 7.5}, {2.7, 7.5}, {2.7, 13.8}, {13.3, 13.8}, {13.3, 7.5}, {11, 7.5}});
            paths.width = 1.4;
            break;
        case Symbol::Check:
            line(paths.stroked, {{3, 8.5}, {6.5, 12}, {13, 4.5}});
            paths.width = 1.8;
            break;
        case Symbol::Warning:
            line(paths.stroked, {{8, 3}, {8, 9.2}});
            line(paths.stroked, {{8, 12.9}, {8, 13}});
            paths.width = 2;
            break;
        case Symbol::Cross:
            line(paths.stroked, {{4, 4}, {12, 12}});
            line(paths.stroked, {{12, 4}, {4, 12}});
            paths.width = 1.8;
            break;
        case Symbol::Plus:
            line(paths.stroked, {{8, 4.5}, {8, 11.5}});
            [[fallthrough]];
        case Symbol::Minus:
            line(paths.stroked, {{4.5, 8}, {11.5, 8}});
            break;
        case Symbol::Minimise:
            line(paths.stroked, {{4, 8.5}, {12, 8.5}});
            paths.width = 1.5;
            break;
        case Symbol::Close:
            line(paths.stroked, {{4, 4}, {12, 12}});
            line(paths.stroked, {{12, 4}, {4, 12}});
            paths.width = 1.5;
            break;
        }
        return paths;
    }

}  // namespace

Symbol::Symbol(QQuickItem* parent) : PictureItem(parent), m_color(palette::ink)
{
    setImplicitSize(16, 16);
    connect(this, &Symbol::changed, this, &Symbol::repaint);
}

Picture Symbol::picture(double ratio) const
{
    const int side = int(std::lround(std::min(width(), height()) * ratio));
    if (m_shape == None || side <= 0) {
        return {};
    }
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / 16.0, side / 16.0);
    const SymbolPaths paths = pathsOf(m_shape);
    painter.fillPath(paths.filled, m_color);
    painter.strokePath(paths.stroked, QPen(m_color, paths.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.end();
    return {image, {}};
}

}  // namespace vantiro
