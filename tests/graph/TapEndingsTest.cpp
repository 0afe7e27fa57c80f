// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/TapTest.h"

#include <QFileInfo>

#include <csignal>
#include <functional>
#include <numeric>
#include <thread>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    struct Ending : test::Row {
        std::function<void(test::Program& tool, test::Program& app, PrivateGraph& graph)> happen;
        std::optional<QString> word;
    };

    const std::vector<Ending> endings{
        {{"Interrupt"}, [](auto& tool, auto&, auto&) { tool.signal(SIGINT); }, std::nullopt},
        {{"Terminate"}, [](auto& tool, auto&, auto&) { tool.signal(SIGTERM); }, std::nullopt},
        {{"ProgramEnds"}, [](auto&, auto& app, auto&) { app.signal(SIGTERM); }, u"source-quit"_s},
        {{"ProgramCrashes"}, [](auto&, auto& app, auto&) { app.signal(SIGKILL); }, u"source-quit"_s},
        {{"AudioServiceDies"}, [](auto&, auto&, auto& graph) { graph.kill(); }, u"device-lost"_s},
    };

    class TapEndingsTest : public test::TapTest, public ::testing::WithParamInterface<Ending> { };
    using TapStartTest = test::TapTest;
    using FrozenServiceTest = test::GraphTest;

}  // namespace

TEST_P(TapEndingsTest, LeavesAWholeTakeAndTellsWhy)
{
    const auto app = program(u"deck"_s);
    link(u"deck"_s, u"speakers"_s);
    const auto tool = recordApp(takePath());
    ASSERT_TRUE(takeGrows(0.8));
    GetParam().happen(*tool, *app, *m_graph);
    const auto result = tool->wait();
    EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
    const RecorderState take = lastTake();
    EXPECT_EQ(take.endedBecause, GetParam().word) << qPrintable(take.endedBecause.value_or(u"nothing"_s));
    EXPECT_EQ(take.stats->deviceLost, GetParam().word.has_value());
    expectContinuous(take);
    expectOneStretch(take, {0, 1}, 0.7);
    expectIdle();
}

INSTANTIATE_TEST_SUITE_P(All, TapEndingsTest, ::testing::ValuesIn(endings), test::rowName);

TEST_F(TapStartTest, AProgramThatIsNotThereMakesNoTake)
{
    const auto other = program(u"other"_s, u"org.test.DeckTwo"_s);
    link(u"other"_s, u"speakers"_s);
    for (const QString& id : {u"org.test.Deck"_s, u"1"_s, u"12abc"_s, u"speakers"_s, QString()}) {
        const auto result = run({u"record"_s, u"--app"_s, id, u"--out"_s, takePath()});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, u"vantiro: %1 is not running\n"_s.arg(id));
    }
    EXPECT_EQ(filesIn(QFileInfo(takePath()).path()), QStringList());
    expectIdle();
}

TEST_F(TapStartTest, AProgramThatPlaysToNobodyYetIsRecordedFromItsStartOn)
{
    const auto app = program(u"deck"_s);
    const auto tool = recordApp(takePath());
    ASSERT_TRUE(takeGrows(0.6));
    link(u"deck"_s, u"speakers"_s);
    ASSERT_TRUE(takeGrows(1.2));
    const RecorderState take = finish(*tool);
    EXPECT_FALSE(take.endedBecause);
    expectContinuous(take);
    const test::SoundFile file = test::SoundFile::read(take.path);
    for (int channel = 0; channel < 2; ++channel) {
        const auto heard = heardIn(file, channel, channel);
        ASSERT_FALSE(heard.empty());
        EXPECT_LT(heard.front().row, 24'000);
        EXPECT_GT(heard.back().row + heard.back().frames, file.frames - 4'800);
    }
}

TEST_F(FrozenServiceTest, ADeviceTakeCountsExactlyWhatItMissed)
{
    const auto card = device();
    ASSERT_NE(card, nullptr);
    const auto tool = record(takePath());
    ASSERT_TRUE(plays(*card, 0.5));
    m_graph->pause();
    std::this_thread::sleep_for(2s);
    m_graph->resume();
    ASSERT_TRUE(plays(*card, 1.2));
    tool->signal(SIGINT);
    EXPECT_EQ(tool->wait().status, 0);
    const test::Heard heard = expectExact(lastTake());
    EXPECT_GT(std::accumulate(heard.jumps.begin(), heard.jumps.end(), std::int64_t{0}), 48'000);
}

}  // namespace vantiro
