// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderStateStore.h"
#include "tests/graph/GraphTest.h"
#include "tests/support/SmallVolume.h"

#include <csignal>
#include <functional>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    constexpr std::int64_t quantum = 256;

    struct Ending : test::Row {
        std::function<void(test::Program& tool, VirtualDevice& card, PrivateGraph& graph)> happen;
        std::optional<QString> word;
    };

    const std::vector<Ending> endings{
        {"Interrupt", [](auto& tool, auto&, auto&) { tool.signal(SIGINT); }, std::nullopt},
        {"Terminate", [](auto& tool, auto&, auto&) { tool.signal(SIGTERM); }, std::nullopt},
        {"CablePulled", [](auto&, auto& card, auto&) { card.disconnect(); }, u"device-lost"_s},
        {"AudioServiceDies", [](auto&, auto&, auto& graph) { graph.kill(); }, u"device-lost"_s},
        {"AudioServiceEnds", [](auto&, auto&, auto& graph) { graph.stop(); }, u"device-lost"_s},
        {"OtherRate", [](auto&, auto& card, auto&) { card.setRate(44'100); }, u"rate-changed"_s},
    };

    class EndingsTest : public test::GraphTest, public ::testing::WithParamInterface<Ending> { };

}  // namespace

TEST_P(EndingsTest, LeavesAWholeTakeAndTellsWhy)
{
    const auto card = device({.quantum = int{quantum}});
    ASSERT_NE(card, nullptr);
    const auto tool = record(takePath());
    ASSERT_TRUE(tool->isRunning());
    // A closed terminal or a reader that went away is no reason to end.
    tool->signal(SIGHUP);
    tool->signal(SIGPIPE);
    ASSERT_TRUE(plays(*card, 0.7));
    ASSERT_TRUE(tool->isRunning());

    const std::int64_t played = card->contentPosition();
    GetParam().happen(*tool, *card, *m_graph);
    const auto result = tool->wait();
    EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
    const RecorderState last = lastTake();
    EXPECT_EQ(last.pid, tool->pid());
    EXPECT_EQ(last.endedBecause, GetParam().word);
    EXPECT_EQ(last.stats->deviceLost, GetParam().word == u"device-lost"_s);
    EXPECT_EQ(last.stats->sampleRateChanged, GetParam().word == u"rate-changed"_s);
    // A cycle may have been on its way.
    EXPECT_GE(expectWhole(last), played - 2 * quantum);
    expectIdle();
}

INSTANTIATE_TEST_SUITE_P(All, EndingsTest, ::testing::ValuesIn(endings), test::rowName);

using FullDiskTest = test::GraphTest;

TEST_F(FullDiskTest, ATakeThatFillsTheDiskIsClosedWhole)
{
    const QString folder = m_sandbox.path(u"volume"_s);
    // A little more than what the recorder keeps free for the close.
    const auto volume = test::SmallVolume::mount(folder, 70);
    if (volume == nullptr) {
        GTEST_SKIP() << "Mounting a small volume is not permitted here, so a full disk is not tested.";
    }
    const auto card = device({.channels = 8, .sampleRate = 96'000});
    ASSERT_NE(card, nullptr);
    const auto tool = record(folder + u"/take.caf"_s, {u"--channels"_s, u"1,2,3,4,5,6,7,8"_s});
    const auto result = tool->wait(40s);
    EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
    const RecorderState last = lastTake();
    EXPECT_EQ(last.endedBecause, u"disk-full"_s);
    EXPECT_FALSE(last.stats->writeFailed());
    EXPECT_GT(last.stats->seconds(), 1.0);
    expectWhole(last, {0, 1, 2, 3, 4, 5, 6, 7});
    expectIdle();
}

}  // namespace vantiro
