// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/DeckGeometry.h"
#include "app/paint/PlinthPainter.h"

#include <QPainter>
#include <QString>

namespace vantiro {

/// The platter's rim, the record with its plain grooves and the sheen, which stands still while the record turns, and
/// the label's paper.
void paintPlatter(QPainter& painter, const DeckGeometry& geometry);

inline constexpr int strobeDotCount = 120;
/// The dots on the rim around (0, 0), for a deck of `size`, lit near the lamp. The same picture turned by the remainder
/// of a 120th of a turn does for all of them.
void paintStrobeDots(QPainter& painter, double size, StrobeLamp lamp);

/// The label's printed band around (0, 0), for a deck of `size`; `text` is repeated as often as it fits and spread
/// until it closes the circle.
void paintLabelBand(QPainter& painter, double size, const QString& text);

}  // namespace vantiro
