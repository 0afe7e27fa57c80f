// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DeckMotion.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    using Seconds = std::chrono::duration<double>;

    constexpr std::size_t trailLength = 270;
    constexpr double longestStep = 0.1;
    constexpr double spinUpTime = 0.35;
    constexpr double runDownTime = 0.9;
    constexpr double armTime = 0.22;
    constexpr int posedSteps = 40;

    void approach(double& value, double target, double elapsed, double time)
    {
        value += (target - value) * std::min(elapsed / time, 1.0);
    }

}  // namespace

DeckMotion DeckMotion::posed(double pose)
{
    DeckMotion motion;
    const Drive drive{.spinning = pose > 0, .armDown = pose > 0, .reduceMotion = true};
    for (int frame = 0; frame < posedSteps; ++frame) {
        motion.step(Moment{} + frame * frameTime, drive);
    }
    motion.arm = pose;
    motion.armTarget = pose;
    return motion;
}

void DeckMotion::step(Moment now, const Drive& drive)
{
    const Span since = std::max(now - last.value_or(now), Span::zero());
    const double elapsed = std::min(Seconds(since).count(), longestStep);
    last = now;
    const bool isSetDown = drive.armDown && armTarget == 0;
    armTarget = drive.armDown ? 1 : 0;
    if (isSetDown) {
        trail.clear();
        driven = Span::zero();
        wasDriven = false;
    }
    const double targetSpeed = drive.spinning ? fullSpeed : 0;
    if (drive.reduceMotion) {
        speed = targetSpeed;
        arm = armTarget;
    } else {
        approach(speed, targetSpeed, elapsed, drive.spinning ? spinUpTime : runDownTime);
        approach(arm, armTarget, elapsed, armTime);
    }
    turns += elapsed * speed;
    if (drive.spinning) {
        driven += wasDriven ? since : Span::zero();
        if (trail.size() == trailLength) {
            trail.pop_front();
        }
        trail.push_back({.driven = driven, .turns = turns});
    }
    wasDriven = drive.spinning;
}

bool DeckMotion::isSettled(const DeckState& state) const
{
    return !state.spins() && state.kind != DeckState::Kind::listening && speed < restingSpeed
        && std::abs(arm - armTarget) < restingArm;
}

double DeckMotion::turnsAt(Span moment) const
{
    const auto after = std::ranges::upper_bound(trail, moment, {}, &Mark::driven);
    if (after == trail.end()) {
        return trail.empty() ? turns : trail.back().turns;
    }
    if (after == trail.begin()) {
        return after->turns;
    }
    const Mark& before = *std::prev(after);
    const double share = Seconds(moment - before.driven) / Seconds(after->driven - before.driven);
    return std::lerp(before.turns, after->turns, share);
}

}  // namespace vantiro
