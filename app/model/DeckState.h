// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>

namespace vantiro {

/// What the deck shows.
struct DeckState {
    enum class Kind {
        noSource,
        ready,
        listening,  ///< Sources are being listened to.
        starting,   ///< A take is being started.
        recording,
    };

    Kind kind = Kind::noSource;
    QDateTime since = {};  ///< When the take started, while recording.

    bool operator==(const DeckState&) const = default;
};

}  // namespace vantiro
