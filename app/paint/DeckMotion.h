// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/DeckState.h"

#include <chrono>
#include <deque>
#include <optional>

namespace vantiro {

/// How the platter turns and the arm moves: both have weight, so they come to speed and to rest in their own time.
struct DeckMotion {
    using Moment = std::chrono::steady_clock::time_point;
    using Span = Moment::duration;

    static constexpr double fullSpeed = 0.5555555555555556;                   ///< Turns a second: 33⅓ a minute.
    static constexpr std::chrono::nanoseconds frameTime{1'000'000'000 / 24};  ///< The least time between two frames.
    static constexpr double restingSpeed = 0.0005;  ///< Turns a second below which nobody sees a turn.
    static constexpr double restingArm = 0.002;     ///< How near to its place the arm has arrived.

    /// What moves the deck.
    struct Drive {
        bool spinning = false;
        bool armDown = false;
        bool reduceMotion = false;  ///< Speed and arm are at their targets at once.
    };

    /// What `turns` was after so much driving.
    struct Mark {
        Span driven;
        double turns = 0;
    };

    double turns = 0;  ///< The platter's rotation in whole turns, ever growing.
    double arm = 0;    ///< 0 parked, 1 on the record.
    /// The latest values of `turns` while the platter is driven, oldest first, as many as there are frames in a
    /// groove's ten seconds and some more. Empty until the needle is set down.
    std::deque<Mark> trail;
    double speed = 0;            ///< Turns a second.
    std::optional<Moment> last;  ///< The latest step.
    double armTarget = 0;        ///< 0 or 1.
    /// How long the platter has been driven since the needle was set down. Nothing is heard meanwhile when it is not:
    /// the groove waits through a pause, and goes on after it where it was.
    Span driven{};
    bool wasDriven = false;  ///< At the latest step.

    /// The motion of a still picture with the arm at `pose`, 0 to 1; the platter is at speed if that is above 0.
    [[nodiscard]] static DeckMotion posed(double pose);

    /// Moves on to `now`. A frame that comes late by more than 0.1 s must not make the platter jump, and time that runs
    /// backwards counts as none.
    void step(Moment now, const Drive& drive);
    /// Nothing moves any more, nor will it in this state: no frame is needed until the state changes. The arc that
    /// circles while sources are listened to never comes to rest.
    [[nodiscard]] bool isSettled(const DeckState& state) const;
    /// What `turns` was after so much driving, between frames in proportion; the nearest known value outside the trail.
    [[nodiscard]] double turnsAt(Span moment) const;
};

}  // namespace vantiro
