// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderStateStore.h"
#include "tests/graph/KillTest.h"

#include <csignal>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    constexpr int killsEach = 5;

    class KilledRecorderTest : public test::KillTest, public ::testing::WithParamInterface<std::uint32_t> { };
    using KilledStarterTest = test::GraphTest;

}  // namespace

TEST_P(KilledRecorderTest, LeavesATakeThatOpensAndIsMendedByTheNext)
{
    killRecorders(killsEach, GetParam());
}

// Several short series, so that they can run beside one another.
INSTANTIATE_TEST_SUITE_P(Seed, KilledRecorderTest, ::testing::Values(1U, 2U, 3U, 4U));

TEST_F(KilledStarterTest, CostsTheTakeNothing)
{
    // The device that the demo's starter records from, through the same client as the window.
    const auto card = device({.name = u"alsa_input.usb-Virtual_Interface-00.analog-stereo"_s});
    const auto starter = launch({u"demo"_s, u"--start-take"_s, takePath(), u"--source"_s,
        u"alsa_input.usb-Virtual_Interface-00.analog-stereo"_s});
    ASSERT_TRUE(test::waitFor([] { return RecorderStateStore::running().has_value(); }));
    const RecorderState state = RecorderStateStore::running().value_or(RecorderState{});
    EXPECT_NE(state.pid, starter->pid());
    ASSERT_TRUE(plays(*card, 0.5));
    starter->signal(SIGKILL);
    EXPECT_EQ(starter->wait().status, -1);
    ASSERT_TRUE(plays(*card, 0.7));
    const std::int64_t played = card->contentPosition();
    const auto last = RecorderClient::stop(15s);
    ASSERT_TRUE(last && *last);
    EXPECT_EQ((*last)->pid, state.pid);
    EXPECT_FALSE((*last)->endedBecause);
    EXPECT_GE(expectWhole(**last), played - 512);
}

}  // namespace vantiro
