// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DeckMotion.h"

#include <gtest/gtest.h>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using Kind = DeckState::Kind;

    constexpr DeckMotion::Drive recording{.spinning = true, .armDown = true};
    constexpr DeckMotion::Drive paused{.spinning = false, .armDown = true};
    constexpr DeckMotion::Drive idle{};

    class DeckMotionTest : public ::testing::Test {
    protected:
        /// Steps at 24 frames a second.
        void run(std::chrono::nanoseconds duration, const DeckMotion::Drive& drive)
        {
            for (const auto end = m_now + duration; m_now < end; m_now += DeckMotion::frameTime) {
                m_motion.step(m_now, drive);
            }
        }

        DeckMotion m_motion;
        DeckMotion::Moment m_now{1h};
    };

}  // namespace

TEST_F(DeckMotionTest, StepsMoveByTheirShareOfTheWay)
{
    m_motion.step(m_now, recording);
    EXPECT_EQ(m_motion.speed, 0);
    EXPECT_EQ(m_motion.armTarget, 1);
    m_motion.step(m_now + 70ms, recording);
    EXPECT_NEAR(m_motion.speed, DeckMotion::fullSpeed * 0.2, 1e-9);
    EXPECT_NEAR(m_motion.turns, DeckMotion::fullSpeed * 0.2 * 0.07, 1e-9);
    EXPECT_NEAR(m_motion.arm, 0.07 / 0.22, 1e-9);
    const double speed = m_motion.speed;
    m_motion.step(m_now + 160ms, idle);
    EXPECT_NEAR(m_motion.speed, speed * 0.9, 1e-9);
}

TEST_F(DeckMotionTest, LateAndBackwardFramesDoNotMakeThePlatterJump)
{
    run(5s, recording);
    const double turns = m_motion.turns;
    m_motion.step(m_now + 10s, recording);
    EXPECT_NEAR(m_motion.turns - turns, 0.1 * m_motion.speed, 1e-9);
    const DeckMotion before = m_motion;
    m_motion.step(m_now, recording);
    EXPECT_EQ(m_motion.turns, before.turns);
    EXPECT_EQ(m_motion.arm, before.arm);
}

TEST_F(DeckMotionTest, ReducedMotionIsThereAtOnce)
{
    m_motion.step(m_now, {.spinning = true, .armDown = true, .reduceMotion = true});
    EXPECT_EQ(m_motion.speed, DeckMotion::fullSpeed);
    EXPECT_EQ(m_motion.arm, 1);
    m_motion.step(m_now + 40ms, {.reduceMotion = true});
    EXPECT_TRUE(m_motion.isSettled({.kind = Kind::ready}));
}

TEST_F(DeckMotionTest, SettlesOnlyWhenNothingMovesOrWill)
{
    run(5s, recording);
    EXPECT_FALSE(m_motion.isSettled({.kind = Kind::recording}));
    EXPECT_NEAR(m_motion.speed, DeckMotion::fullSpeed, 1e-5);

    run(2s, paused);
    EXPECT_NEAR(m_motion.arm, 1, 1e-6);
    EXPECT_FALSE(m_motion.isSettled({.kind = Kind::playing, .paused = true})) << "the platter runs down slowly";
    run(5s, paused);
    EXPECT_TRUE(m_motion.isSettled({.kind = Kind::playing, .paused = true}));

    run(300ms, idle);
    EXPECT_FALSE(m_motion.isSettled({.kind = Kind::ready})) << "the arm is on its way";
    run(2s, idle);
    EXPECT_TRUE(m_motion.isSettled({.kind = Kind::ready}));
    EXPECT_FALSE(m_motion.isSettled({.kind = Kind::listening}));
    EXPECT_FALSE(m_motion.isSettled({.kind = Kind::recording}));
}

TEST_F(DeckMotionTest, RemembersTheTurnsOfTheLastTenSeconds)
{
    run(40s, recording);
    const auto driven = m_motion.driven;
    EXPECT_NEAR(std::chrono::duration<double>(driven).count(), 40, 0.1);
    EXPECT_LT(m_motion.trail.size(), 500U);
    EXPECT_NEAR(m_motion.turns - m_motion.turnsAt(driven - 10s), 10 * DeckMotion::fullSpeed, 1e-6);
    EXPECT_NEAR(m_motion.turns - m_motion.turnsAt(driven - 1010ms), 1.01 * DeckMotion::fullSpeed, 1e-6)
        << "between frames";
    EXPECT_EQ(m_motion.turnsAt(driven + 1s), m_motion.turns);
    EXPECT_EQ(m_motion.turnsAt(driven - 1h), m_motion.trail.front().turns);
}

TEST_F(DeckMotionTest, CountsOnlyTheTimeThatThePlatterIsDriven)
{
    run(1s, idle);
    EXPECT_TRUE(m_motion.trail.empty());
    run(1s, recording);
    const auto driven = m_motion.driven;
    run(9s, paused);
    EXPECT_EQ(m_motion.driven, driven);
    run(1s, recording);
    EXPECT_NEAR(std::chrono::duration<double>(m_motion.driven - driven).count(), 1, 0.1);
    run(1s, idle);
    run(1s, recording);
    EXPECT_LT(m_motion.driven, 1100ms) << "the needle was lifted in between";
}

TEST_F(DeckMotionTest, PosesForStillPictures)
{
    const auto parked = DeckMotion::posed(0);
    EXPECT_EQ(parked.turns, 0);
    EXPECT_TRUE(parked.isSettled({.kind = Kind::ready}));
    const auto half = DeckMotion::posed(0.5);
    EXPECT_EQ(half.arm, 0.5);
    EXPECT_EQ(half.speed, DeckMotion::fullSpeed);
    EXPECT_NEAR(half.turns, 39.0 / 24 * DeckMotion::fullSpeed, 1e-6);
}

}  // namespace vantiro
