// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DeckGeometry.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    constexpr double straightDown = std::numbers::pi / 2;

    QPointF onCircle(QPointF centre, double angle, double radius)
    {
        return centre + radius * QPointF(std::cos(angle), std::sin(angle));
    }

}  // namespace

DeckGeometry DeckGeometry::fitted(const QRectF& area)
{
    const double side = std::clamp(std::min(area.height(), area.width() / aspect), 0.0, largest);
    return {.origin = area.center() - QPointF(side * aspect / 2, side / 2), .size = side};
}

DeckGeometry DeckGeometry::snapped(double ratio) const
{
    return {.origin = QPointF(std::round(origin.x() * ratio), std::round(origin.y() * ratio)) / ratio,
        .size = 2 * std::floor(size * ratio / 2) / ratio};
}

QPointF DeckGeometry::around(double angle, double share) const
{
    return onCircle(centre(), angle, of(share));
}

double DeckGeometry::armAngle(double amount) const
{
    const QPointF toCentre = centre() - pivot();
    const double distance = std::hypot(toCentre.x(), toCentre.y());
    if (distance <= 0) {
        return straightDown;
    }
    // The law of cosines in the triangle of pivot, centre and needle.
    const double cosine = (distance * distance + armLength() * armLength() - needleRadius() * needleRadius())
        / (2 * distance * armLength());
    const double full = std::atan2(toCentre.y(), toCentre.x()) - std::acos(cosine);
    return straightDown + (full - straightDown) * amount;
}

QPointF DeckGeometry::armTip(double amount) const
{
    return onCircle(pivot(), armAngle(amount), armLength());
}

}  // namespace vantiro
