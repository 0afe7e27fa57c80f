// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/KillTest.h"

#include <QFileInfo>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    using LongKillTest = test::KillTest;
    using LongWaitTest = test::GraphTest;

}  // namespace

TEST_F(LongKillTest, AHundredKilledRecordersLeaveAHundredTakes)
{
    killRecorders(100, 20'231'117);
}

TEST_F(LongWaitTest, ASourceThatFallsSilentForGoodEndsTheTake)
{
    const auto card = device();
    const auto tool = record(takePath());
    ASSERT_TRUE(plays(*card, 0.7));
    card->hang();
    const std::int64_t played = card->contentPosition();
    const auto hung = std::chrono::steady_clock::now();
    EXPECT_EQ(tool->wait(30s).status, 0);
    EXPECT_GE(std::chrono::steady_clock::now() - hung, 9500ms);
    const RecorderState last = lastTake();
    EXPECT_EQ(last.endedBecause, u"input-stalled"_s);
    EXPECT_EQ(expectWhole(last), played);
    expectIdle();
}

TEST_F(LongWaitTest, ASourceThatNeverSoundsMakesNoTake)
{
    const auto card = device();
    card->hang();
    const auto result = launch({u"record"_s, u"--device"_s, u"card"_s, u"--out"_s, takePath()})->wait(30s);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, u"vantiro: card sent no audio, so no take was started\n"_s);
    EXPECT_EQ(filesIn(QFileInfo(takePath()).path()), QStringList());
    expectIdle();
}

}  // namespace vantiro
