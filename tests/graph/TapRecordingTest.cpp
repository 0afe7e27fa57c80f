// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/RampSignal.h"
#include "tests/graph/TapTest.h"

#include <algorithm>
#include <csignal>
#include <functional>
#include <span>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    using TapRecordingTest = test::TapTest;

    class TapEventTest;

    /// What happens around a program that plays on.
    struct Event : test::Row {
        std::function<void(TapEventTest& test)> happen;
        bool isSeamless = true;  ///< The program itself misses no cycle.
    };

    class TapEventTest : public test::TapTest, public ::testing::WithParamInterface<Event> {
    public:
        using test::TapTest::unlink;

        void moveToHeadphones()
        {
            unlink(u"deck"_s, u"speakers"_s);
            link(u"deck"_s, u"headphones"_s);
        }

        void othersComeAndGo()
        {
            std::vector<std::unique_ptr<test::Program>> others;
            for (int number = 0; number < 5; ++number) {
                const QString name = u"other%1"_s.arg(number);
                others.push_back(program(name, u"org.test.Other%1"_s.arg(number)));
                link(name, number % 2 == 0 ? u"speakers"_s : u"headphones"_s);
            }
        }

        void setQuantum(int frames)
        {
            runTool(
                u"pw-metadata"_s, {u"-n"_s, u"settings"_s, u"0"_s, u"clock.force-quantum"_s, QString::number(frames)});
        }
    };

    const std::vector<Event> events{
        {{"OtherProgramsComeAndGo"}, [](auto& test) { test.othersComeAndGo(); }},
        {{"TheStreamMoves"}, [](auto& test) { test.moveToHeadphones(); }, false},
        {{"TheStreamIsUnlinked"}, [](auto& test) { test.unlink(u"deck"_s, u"speakers"_s); }, false},
        {{"LongerCycles"}, [](auto& test) { test.setQuantum(2048); }},
        // No shorter: without real-time scheduling, two tests at a time make the graph itself late at 256.
        {{"ShorterCycles"}, [](auto& test) { test.setQuantum(512); }},
    };

}  // namespace

TEST_F(TapRecordingTest, IsBitByBitWhatTheProgramPlays)
{
    const auto app = program(u"deck"_s);
    const auto other = program(u"other"_s, u"org.test.Other"_s);
    link(u"deck"_s, u"speakers"_s);
    link(u"other"_s, u"speakers"_s);
    const auto tool = recordApp(takePath());
    ASSERT_TRUE(takeGrows(1.5));
    const RecorderState take = finish(*tool);
    EXPECT_EQ(take.deviceUID, u"app:org.test.Deck"_s);
    EXPECT_EQ(take.deviceName, u"Deck deck"_s);
    EXPECT_EQ(take.channels, (std::vector<std::int64_t>{1, 2}));
    EXPECT_FALSE(take.endedBecause);
    expectContinuous(take);
    expectOneStretch(take, {0, 1}, 1.4);
    expectIdle();
}

TEST_F(TapRecordingTest, KeepsTheChannelsOfAnInterface)
{
    const auto app = program(u"deck"_s, u"org.test.Deck"_s, 4);
    link(u"deck"_s, u"interface"_s, 2);
    const auto tool = recordApp(takePath(), u"org.test.Deck"_s, {u"--channels"_s, u"4,3,6"_s});
    ASSERT_TRUE(takeGrows(1.5));
    const RecorderState take = finish(*tool);
    EXPECT_EQ(take.channels, (std::vector<std::int64_t>{4, 3, 6}));
    expectContinuous(take);
    expectOneStretch(take, {1, 0, 3}, 1.4);
}

TEST_F(TapRecordingTest, SumsTheStreamsOfOneProgram)
{
    constexpr int steady = 12'345;
    const auto app = program(u"deck"_s, u"org.test.Deck"_s, 2, steady);
    link(u"deck"_s, u"speakers"_s);
    link(u"deck-steady"_s, u"interface"_s);
    const auto tool = recordApp(takePath());
    ASSERT_TRUE(takeGrows(0.7));
    // The second stream comes to the same speakers in the middle of the take.
    link(u"deck-steady"_s, u"speakers"_s);
    ASSERT_TRUE(takeGrows(0.7));
    const RecorderState take = finish(*tool);
    expectContinuous(take);
    const test::SoundFile file = test::SoundFile::read(take.path);
    ASSERT_EQ(file.channels, 2);
    for (int channel = 0; channel < 2; ++channel) {
        const std::vector<std::int32_t> samples = samplesOf(file, channel);
        const auto sounds = std::ranges::find_if(samples, [](std::int32_t sample) { return sample != 0; });
        const std::span heard(sounds, samples.end());
        const auto report = RampSignal::check(heard, channel);
        ASSERT_TRUE(report && report->firstBreak);
        EXPECT_GT(*report->firstBreak, 24'000);
        EXPECT_LT(*report->firstBreak, std::ssize(heard) - 24'000);
        for (std::int64_t row = *report->firstBreak; row < std::ssize(heard); ++row) {
            const std::int32_t played = RampSignal::sample(channel, report->start + row);
            ASSERT_EQ(heard[static_cast<std::size_t>(row)], std::min(played + steady, (1 << 23) - 1)) << "row " << row;
        }
    }
}

TEST_F(TapRecordingTest, GoesOnThroughThePausesOfTheProgram)
{
    const auto app = program(u"deck"_s);
    link(u"deck"_s, u"speakers"_s);
    const auto tool = recordApp(takePath());
    ASSERT_TRUE(takeGrows(0.6));
    app->signal(SIGUSR1);
    waitForStream(u"deck"_s, false);
    ASSERT_TRUE(takeGrows(1.2)) << "silence is part of the take";
    app->signal(SIGUSR2);
    waitForStream(u"deck"_s, true);
    link(u"deck"_s, u"speakers"_s);
    ASSERT_TRUE(takeGrows(1.2));
    const RecorderState take = finish(*tool);
    EXPECT_FALSE(take.endedBecause);
    expectContinuous(take);
    const test::SoundFile file = test::SoundFile::read(take.path);
    for (int channel = 0; channel < 2; ++channel) {
        SCOPED_TRACE(channel);
        const auto heard = heardIn(file, channel, channel);
        ASSERT_EQ(heard.size(), 2U);
        EXPECT_GT(heard[0].frames, 20'000);
        EXPECT_GT(heard[1].frames, 20'000);
        EXPECT_GT(heard[1].row - heard[0].row - heard[0].frames, 40'000);
    }
}

TEST_P(TapEventTest, CountsNothing)
{
    const auto app = program(u"deck"_s);
    link(u"deck"_s, u"speakers"_s);
    const auto tool = recordApp(takePath());
    ASSERT_TRUE(takeGrows(0.6));
    GetParam().happen(*this);
    ASSERT_TRUE(takeGrows(1.2));
    const RecorderState take = finish(*tool);
    EXPECT_FALSE(take.endedBecause);
    expectContinuous(take);
    if (GetParam().isSeamless) {
        expectOneStretch(take, {0, 1}, 1.7);
        return;
    }
    const test::SoundFile file = test::SoundFile::read(take.path);
    for (int channel = 0; channel < 2; ++channel) {
        std::int64_t frames = 0;
        for (const test::Stretch& stretch : heardIn(file, channel, channel)) {
            frames += stretch.frames;
        }
        EXPECT_GE(frames, 1.5 * 48'000);
    }
}

INSTANTIATE_TEST_SUITE_P(All, TapEventTest, ::testing::ValuesIn(events), test::rowName);

}  // namespace vantiro
