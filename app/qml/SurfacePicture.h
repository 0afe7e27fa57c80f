// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QSizeF>

#include <vector>

namespace vantiro {

/// A picture in device pixels, and where its upper left corner lies from the upper left corner of what it shows.
struct Picture {
    QImage image;
    QPoint origin;
};

/// One line of light or one shadow of a surface, in points: the surface's outline, shifted, grown and softened.
struct Shade {
    enum class Side {
        outside,  ///< What lies within that outline, drawn around the surface: slots, lips, cast shadows, glows.
        inside,   ///< What lies beyond that outline, drawn on the surface: bevels and the shadow in a well.
    };

    Side side = Side::outside;
    double across = 0;
    double down = 0;
    double blur = 0;    ///< Twice the standard deviation; 0 is a hard line.
    double spread = 0;  ///< Grows the outline outside, shrinks it inside.
    QColor colour;
};

/// One colour along a surface's gradient.
struct FillStop {
    double at = 0;
    QColor colour;
};

/// How a rounded surface looks, whatever its size.
struct SurfaceLook {
    enum class Fill {
        down,
        across,
        lens,  ///< From a pale spot above the middle outwards.
    };

    Fill direction = Fill::down;
    std::vector<FillStop> fill;  ///< In rising order; at least one.
    std::vector<Shade> shades;   ///< The first lies on top.
    double radius = 0;           ///< Held to half of the shorter side.
};

/// A surface of `size` points at `ratio` device pixels a point, with room for what lies around it. Edges and hard lines
/// stand on device pixels at every ratio. Null for an empty size.
[[nodiscard]] Picture surfacePicture(QSizeF size, const SurfaceLook& look, double ratio);

/// `from` giving way to `to` as `share` goes from 0 to 1. The result covers both.
[[nodiscard]] Picture crossfade(const Picture& from, const Picture& to, double share);

}  // namespace vantiro
