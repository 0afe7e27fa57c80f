// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/Groove.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using LevelScale::Tone;

    const DeckGeometry deck{.origin = {}, .size = 1000};

    double angleOf(QPointF point)
    {
        const QPointF from = point - deck.centre();
        return std::atan2(from.y(), from.x());
    }

    double radiusOf(QPointF point)
    {
        const QPointF from = point - deck.centre();
        return std::hypot(from.x(), from.y());
    }

    /// How far `point` stands behind `start` as the record turns, in turns, without whole ones.
    double behind(QPointF point, QPointF start)
    {
        const double turns = (angleOf(point) - angleOf(start)) / (2 * std::numbers::pi);
        return turns - std::floor(turns);
    }

    std::vector<Groove::Point> posed(const std::vector<float>& history, double pose = 1)
    {
        const auto motion = DeckMotion::posed(pose);
        return Groove::points(deck, {.history = history, .motion = motion, .pose = pose}, Groove::plainSteps);
    }

    class RunningGroove : public ::testing::Test {
    protected:
        void run(std::chrono::nanoseconds duration, const DeckState& state)
        {
            const DeckMotion::Drive drive{.spinning = state.spins(), .armDown = state.armDown()};
            for (const auto end = m_now + duration; m_now < end; m_now += DeckMotion::frameTime) {
                m_motion.step(m_now, drive);
            }
            m_state = state;
        }
        [[nodiscard]] std::vector<Groove::Point> points() const
        {
            return Groove::points(deck, {.history = m_history, .motion = m_motion, .pose = {}}, Groove::plainSteps);
        }

        DeckMotion m_motion;
        DeckMotion::Moment m_now{1h};
        DeckState m_state;
        std::vector<float> m_history = std::vector<float>(600, -20.0F);
    };

}  // namespace

TEST(Groove, WindsFromTheNeedleInwards)
{
    const auto full = posed(std::vector<float>(600, -20.0F));
    ASSERT_EQ(full.size(), std::size_t(Groove::plainSteps));
    EXPECT_NEAR(angleOf(full.front().at), angleOf(deck.armTip(1)), 1e-9);
    EXPECT_NEAR(radiusOf(full.front().at), deck.needleRadius(), 1e-6);
    EXPECT_NEAR(radiusOf(full.back().at), 233 + 16, 6.2);
    // The value of 299 places ago was heard 299/30 s ago.
    EXPECT_NEAR(behind(full.back().at, full.front().at), std::fmod(299 / 30.0 * DeckMotion::fullSpeed, 1.0), 1e-9);

    EXPECT_NEAR(double(posed(std::vector<float>(100, -20.0F)).size()), 150, 2) << "fills as the take goes";
    EXPECT_TRUE(posed({}).empty());
    EXPECT_TRUE(posed(std::vector<float>(600, -20.0F), 0).empty()) << "parked";
}

TEST(Groove, WobblesWithTheLevel)
{
    const auto wobble = [](float level) {
        double most = 0;
        for (const auto& point : posed(std::vector<float>(300, level))) {
            const double plain = deck.needleRadius() - point.age * (deck.needleRadius() - 249);
            most = std::max(most, std::abs(radiusOf(point.at) - plain));
        }
        return most;
    };
    EXPECT_NEAR(wobble(0), 6.2, 0.01);
    EXPECT_NEAR(wobble(4), 6.2, 0.01);
    EXPECT_NEAR(wobble(-30), 6.2 / 4, 0.01);
}

TEST(Groove, MarksHaveTheStyleOfLevelAndAge)
{
    struct Case {
        double levelDB;
        Tone tone;
    };
    for (const auto& test :
        {Case{-20, Tone::quiet}, Case{-10, Tone::good}, Case{-3, Tone::warning}, Case{-0.5, Tone::clip}}) {
        for (const double age : {0.0, 0.6, 0.61}) {
            const auto index = Groove::styleOf({.at = {}, .levelDB = test.levelDB, .age = age});
            EXPECT_EQ(Groove::styleAt(index).tone, test.tone) << test.levelDB;
            EXPECT_EQ(Groove::styleAt(index).isFaded, age > 0.6) << age;
            EXPECT_EQ(Groove::indexOf(Groove::styleAt(index)), index);
        }
    }
}

TEST_F(RunningGroove, HoldsOnlyWhatWasHeardSinceThePlatterTurned)
{
    EXPECT_TRUE(points().empty());
    run(2s, {.kind = DeckState::Kind::ready});
    EXPECT_TRUE(points().empty());
    run(2s, {.kind = DeckState::Kind::recording});
    EXPECT_NEAR(double(points().size()), double(Groove::plainSteps) * 60 / 300, 5);
    run(20s, {.kind = DeckState::Kind::recording});
    const auto full = points();
    ASSERT_EQ(full.size(), std::size_t(Groove::plainSteps));
    EXPECT_NEAR(behind(full.back().at, full.front().at), std::fmod(299 / 30.0 * DeckMotion::fullSpeed, 1.0), 1e-4);
}

TEST_F(RunningGroove, RunsOnWithThePlatterWhilePaused)
{
    run(20s, {.kind = DeckState::Kind::playing});
    const double turns = m_motion.turns;
    run(1s, {.kind = DeckState::Kind::playing, .paused = true});
    const auto wound = points();
    ASSERT_EQ(wound.size(), std::size_t(Groove::plainSteps));
    EXPECT_GT(m_motion.turns, turns + 0.2);
    EXPECT_NEAR(behind(wound.front().at, deck.armTip(m_motion.arm)), m_motion.turns - turns, 0.03);
    run(6s, m_state);
    const auto atRest = points();
    EXPECT_NEAR(behind(atRest.back().at, atRest.front().at), behind(wound.back().at, wound.front().at), 1e-6);
}

TEST_F(RunningGroove, GoesOnAfterAPauseWhereItWas)
{
    run(5s, {.kind = DeckState::Kind::playing});
    const auto before = points();
    const double turns = m_motion.turns;
    run(60s, {.kind = DeckState::Kind::playing, .paused = true});
    const double waited = m_motion.turns - turns;
    run(1s, {.kind = DeckState::Kind::playing});
    const auto after = points();
    EXPECT_NEAR(double(after.size()), double(before.size()) + double(Groove::plainSteps) * 30 / 300, 5)
        << "the pause itself holds nothing";
    EXPECT_NEAR(behind(after.back().at, after.front().at),
        std::fmod(m_motion.turns - turns + 5 * DeckMotion::fullSpeed, 1.0), 0.25)
        << "turned on by " << waited << " meanwhile";

    run(3s, {.kind = DeckState::Kind::ready});
    run(1s, {.kind = DeckState::Kind::recording});
    EXPECT_NEAR(double(points().size()), double(Groove::plainSteps) * 30 / 300, 5) << "another take is another record";
}

}  // namespace vantiro
