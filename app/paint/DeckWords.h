// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/DeckState.h"
#include "app/model/MeterLevels.h"

#include <QString>
#include <QStringList>

/// The words that stand on the deck.
namespace vantiro::DeckWords {

/// What the deck does.
[[nodiscard]] QString caption(const DeckState& state);
/// What a press would do, in the caption's place while the pointer is over the centre; the caption where nothing else
/// is to be said.
[[nodiscard]] QString hint(const DeckState& state);
/// A hint as the two lines that fit the glass; what is no hint stays one.
[[nodiscard]] QStringList hintLines(const DeckState& state);
/// The peak, or that there is none, or that it clipped.
[[nodiscard]] QString levelCaption(const MeterLevels& levels);

/// A level with so many digits after the point; what rounds to nothing has no sign.
[[nodiscard]] QString decibels(double levelDB, int digits);

/// The text around the label of take `number`, once.
[[nodiscard]] QString label(int number);

}  // namespace vantiro::DeckWords
