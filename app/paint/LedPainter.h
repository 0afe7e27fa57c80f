// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/DeckGeometry.h"
#include "app/paint/LedRing.h"

#include <QPainter>

namespace vantiro {

/// One lit segment with its glow.
void paintLitSegment(QPainter& painter, const DeckGeometry& geometry, LedRing::Side side, int index);
/// How wide the ring is with the glow of its lamps.
[[nodiscard]] double ringGlowWidth(const DeckGeometry& geometry);

/// The arc that circles while sources are listened to, `seconds` after it set out.
void paintSweep(QPainter& painter, const DeckGeometry& geometry, double seconds);

}  // namespace vantiro
