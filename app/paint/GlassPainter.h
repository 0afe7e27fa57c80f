// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/DeckState.h"
#include "app/model/MeterLevels.h"
#include "app/paint/DeckGeometry.h"

#include <QPainter>
#include <QString>

namespace vantiro {

/// What the glass in the middle of the record shows.
struct Readout {
    DeckState state = {};
    MeterLevels levels = {};
    QString clock = {};
    bool isHovered = false;  ///< The pointer is over the glass: it says what a press would do.
    double scale = 1;        ///< Of glass and words; smaller while pressed.

    static constexpr double pressedScale = 0.97;

    /// Both look alike on the deck, the lamps around it included: most levels differ by less than can be seen.
    [[nodiscard]] bool looksLike(const Readout& other) const;
    /// The glass alone reads the same.
    [[nodiscard]] bool readsLike(const Readout& other) const;
    bool operator==(const Readout&) const = default;
};

/// The glass with its bezel, the words on it and what it mirrors. It is the centre's press surface.
void paintGlass(QPainter& painter, const DeckGeometry& geometry, const Readout& readout);

}  // namespace vantiro
