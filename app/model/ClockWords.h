// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/DeckState.h"

#include <QDateTime>
#include <QString>

/// Times in figures. Parts of a second are dropped, and what is no time or below 0 is 0.
namespace vantiro::ClockWords {

enum class Form {
    deck,   ///< 04:07, from an hour on 1:04:07.
    brief,  ///< 4:07, from an hour on 1:04:07.
    full,   ///< 0:04:07
};

[[nodiscard]] QString time(double seconds, Form form);

/// The deck's clock at `now`: how long the take runs, or where it plays; 00:00 otherwise.
[[nodiscard]] QString ofDeck(const DeckState& state, const QDateTime& now);

}  // namespace vantiro::ClockWords
