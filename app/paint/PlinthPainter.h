// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/DeckState.h"
#include "app/paint/DeckGeometry.h"

#include <QColor>
#include <QPainter>

namespace vantiro {

/// What the strobe lamp beside the platter shows.
enum class StrobeLamp {
    out,    ///< No source.
    ready,  ///< Lime.
    recording,
};

/// What it shows in a state.
[[nodiscard]] StrobeLamp strobeLampOf(const DeckState& state);

/// Where it stands, in degrees clockwise from the positive x axis.
inline constexpr double strobeLampDegrees = 135;

/// The colour of its window.
[[nodiscard]] QColor strobeColour(StrobeLamp lamp);

/// Whatever of the deck neither moves nor changes but with the lamp: the plate with its grain, the dish and the trough
/// milled into it, the scale, the unlit segments, the lamp's post, the arm's base and its rest. `plate` is the plinth's
/// edge; `ratio` are device pixels a point.
void paintPlinth(QPainter& painter, const QRectF& plate, const DeckGeometry& geometry, StrobeLamp lamp, double ratio);

}  // namespace vantiro
