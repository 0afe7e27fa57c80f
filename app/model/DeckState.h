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
        playing,  ///< A take is played back, or paused.
    };

    Kind kind = Kind::noSource;
    QDateTime since = {};  ///< When the take started, while recording.
    double position = 0;   ///< In the take, in seconds, while playing.
    double length = 0;     ///< The take's, in seconds, while playing.
    bool paused = false;   ///< While playing.

    /// The platter is driven.
    [[nodiscard]] bool spins() const { return kind == Kind::recording || (kind == Kind::playing && !paused); }
    /// The arm lies on the record.
    [[nodiscard]] bool armDown() const { return kind == Kind::recording || kind == Kind::playing; }

    bool operator==(const DeckState&) const = default;
};

}  // namespace vantiro
