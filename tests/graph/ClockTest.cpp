// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/GraphTest.h"

#include <csignal>
#include <functional>
#include <thread>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    struct Trouble : test::Row {
        std::function<void(VirtualDevice& card, PrivateGraph& graph)> happen;
        std::optional<std::int64_t> jump;  ///< Frames that the recorded signal jumps by; absent: the machine decides.
    };

    const std::vector<Trouble> troubles{
        {"OneFrameMissing", [](auto& card, auto&) { card.jumpPosition(1); }, 1},
        {"TwoSecondsMissing", [](auto& card, auto&) { card.jumpPosition(96'000); }, 96'000},
        {"BackwardJump", [](auto& card, auto&) { card.jumpPosition(-300); }, -300},
        {"LossThatTheDeviceHides", [](auto& card, auto&) { card.overrun(4800); }, 4800},
        {"LongerCycles", [](auto& card, auto&) { card.setQuantum(1024); }, 0},
        {"ShorterCycles", [](auto& card, auto&) { card.setQuantum(64); }, 0},
        {"AnotherClock", [](auto& card, auto&) { card.setClockId(4711); }, 0},
        {"HangThatSkips",
            [](auto& card, auto&) {
                card.hang();
                std::this_thread::sleep_for(300ms);
                card.resumeCycles(VirtualDevice::Resume::skipping);
            },
            std::nullopt},
        {"HangThatDeliversLate",
            [](auto& card, auto&) {
                card.hang();
                std::this_thread::sleep_for(800ms);
                card.resumeCycles(VirtualDevice::Resume::bursting);
            },
            0},
        {"AudioServiceFreezes",
            [](auto&, auto& graph) {
                graph.pause();
                std::this_thread::sleep_for(300ms);
                graph.resume();
            },
            std::nullopt},
    };

    class ClockTest : public test::GraphTest, public ::testing::WithParamInterface<Trouble> { };

}  // namespace

TEST_P(ClockTest, CountsExactlyWhatIsMissingFromTheTake)
{
    const auto card = device();
    ASSERT_NE(card, nullptr);
    const auto tool = record(takePath());
    ASSERT_TRUE(tool->isRunning());
    ASSERT_TRUE(plays(*card, 0.5));
    GetParam().happen(*card, *m_graph);
    // A hidden loss is believed once it has lasted, and a jump backwards moves the content too.
    ASSERT_TRUE(plays(*card, 1.2 + static_cast<double>(GetParam().jump.value_or(0)) / 48'000));
    tool->signal(SIGINT);
    const auto result = tool->wait();
    EXPECT_EQ(result.status, 0) << qPrintable(result.errors);

    const test::Heard heard = expectExact(lastTake());
    if (const auto jump = GetParam().jump) {
        EXPECT_EQ(heard.jumps, *jump == 0 ? std::vector<std::int64_t>{} : std::vector{*jump});
    }
}

INSTANTIATE_TEST_SUITE_P(All, ClockTest, ::testing::ValuesIn(troubles), test::rowName);

}  // namespace vantiro
