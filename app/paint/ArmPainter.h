// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPainter>

namespace vantiro {

/// Whether the lamp over the needle is lit, as it is while a take is recorded.
enum class NeedleLamp {
    out,
    lit,
};

/// The tone arm of a deck of `size`, its pivot at (0, 0), hanging straight down. It is painted so once, and turned.
void paintArm(QPainter& painter, double size, NeedleLamp lamp);
/// What the arm and its shadow cover at most.
[[nodiscard]] QRectF armArea(double size);

/// The arm's outline in black, as its shadow before it is blurred.
void paintArmShape(QPainter& painter, double size);
/// The soft shadow, in the same place as the arm; `ratio` are device pixels a point.
void paintArmShadow(QPainter& painter, double size, double ratio);
/// How far the shadow lies from the arm, which hangs higher while it is parked. `amount` as in DeckMotion.
[[nodiscard]] QPointF armShadowOffset(double size, double amount);

/// What the lit lamp throws on the record around `tip`.
void paintNeedleGlow(QPainter& painter, double size, QPointF tip);

}  // namespace vantiro
