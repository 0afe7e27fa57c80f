// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/DeckGeometry.h"
#include "app/paint/GlassPainter.h"

#include <QRectF>

#include <optional>
#include <span>

namespace vantiro {

/// All that a frame of the deck depends on.
struct DeckScene {
    QRectF plate;           ///< The plinth.
    DeckGeometry geometry;  ///< Of the deck on it.
    double ratio = 1;       ///< Device pixels a point.
    Readout readout = {};
    std::span<const float> history =
        {};  ///< dB, oldest first; the last value was heard when the platter was last driven.
    int takeNumber = 1;
    std::optional<double> sweepSeconds = {};  ///< Since the listening arc set out; absent without it.
    std::optional<double> pose = {};          ///< A still picture's arm.
};

}  // namespace vantiro
