// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QRectF>

#include <numbers>

namespace vantiro {

/// Where everything of the deck stands. All measures follow from one, `size`: the side of the square that holds the
/// platter; the arm stands to its right. Points are in the coordinates of the area that the deck was fitted into, and
/// angles in radians, clockwise from the positive x axis, as y grows downwards.
struct DeckGeometry {
    QPointF origin;  ///< The square's top left corner.
    double size = 0;

    /// The frame's width in terms of its height.
    static constexpr double aspect = 1.12;
    /// A record is no larger than that, however large the window.
    static constexpr double largest = 700;

    /// The largest deck in the middle of `area`, up to `largest`.
    [[nodiscard]] static DeckGeometry fitted(const QRectF& area);

    /// The same on a screen of `ratio` device pixels a point: moved and made smaller by less than two pixels, so that
    /// corner and centre are whole pixels and what stands still is copied rather than scaled.
    [[nodiscard]] DeckGeometry snapped(double ratio) const;

    /// A length of the drawing, which is given in terms of `size`.
    [[nodiscard]] double of(double share) const { return share * size; }

    [[nodiscard]] QRectF frame() const { return {origin.x(), origin.y(), aspect * size, size}; }
    [[nodiscard]] QPointF centre() const { return origin + QPointF(size / 2, size / 2); }
    /// The point `share` of the size away from the centre, at an angle.
    [[nodiscard]] QPointF around(double angle, double share) const;

    [[nodiscard]] double ringWidth() const { return of(0.046); }
    [[nodiscard]] double ringRadius() const { return of(0.5 - 0.023 - 0.085); }
    [[nodiscard]] double recordRadius() const { return ringRadius() - of(0.023 + 0.022); }
    [[nodiscard]] double labelRadius() const { return of(0.19); }
    [[nodiscard]] double innerGrooveRadius() const { return labelRadius() + of(0.043); }
    [[nodiscard]] double glassRadius() const { return of(0.136); }

    [[nodiscard]] QPointF pivot() const { return origin + QPointF(of(1.015), of(0.105)); }
    [[nodiscard]] double armLength() const { return of(0.47); }
    /// How far from the centre the needle stands while the arm is down.
    [[nodiscard]] double needleRadius() const { return recordRadius() - of(0.03); }
    /// The arm's direction: straight down while parked (`amount` 0), the needle over the first groove at 1.
    [[nodiscard]] double armAngle(double amount) const;
    /// Where the needle is.
    [[nodiscard]] QPointF armTip(double amount) const;

    bool operator==(const DeckGeometry&) const = default;
};

/// Degrees as radians.
constexpr double radians(double degrees)
{
    return degrees * std::numbers::pi / 180;
}

}  // namespace vantiro
