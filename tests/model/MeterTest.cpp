// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/MeterBallistics.h"
#include "tests/model/ModelTest.h"

#include <cmath>
#include <limits>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using namespace Qt::Literals::StringLiterals;

    constexpr auto inf = std::numeric_limits<float>::infinity();

    float linear(float level)
    {
        return std::pow(10.0F, level / 20);
    }

    class MeterTest : public test::ModelTest {
    protected:
        void SetUp() override
        {
            m_sandbox.setVariable("VANTIRO_DEMO", std::nullopt);
            m_source = addInterface(u"mixer"_s);
            launch();
            m_model->setSelected(mixer);
        }

        /// Lets time pass a tick of the meter at a time, while the source plays with these samples.
        void play(std::chrono::nanoseconds duration, float left, float right)
        {
            for (auto passed = 0ns; passed + MeterBallistics::period <= duration; passed += MeterBallistics::period) {
                m_source->deliver({{left}, {right}});
                wait(MeterBallistics::period);
            }
        }
        /// The same, but nothing is delivered.
        void wait(std::chrono::nanoseconds duration)
        {
            for (auto passed = 0ns; passed + MeterBallistics::period <= duration; passed += MeterBallistics::period) {
                m_scheduler.advance(MeterBallistics::period);
                m_scheduler.settle();
            }
        }
        void addUser()
        {
            m_flows->meter().addUser();
            m_scheduler.settle();
        }
        [[nodiscard]] float left() const { return m_model->levels().left; }

        std::shared_ptr<test::FakeSource> m_source;
    };

}  // namespace

TEST(MeterBallistics, JumpUpHoldAndFall)
{
    // Ticks of a signal with this peak, then what the bar, the hold mark and the lamp show.
    struct Step {
        int ticks;
        float sample;
        float bar;
        float hold;
        bool clipped;
        float heard;
    };
    const Step steps[] = {
        {1, 0, -60, -60, false, -60},
        {1, 1, 0, 0, true, 0},
        {1, linear(-20), -0.8666667F, 0, true, -20},
        {44, linear(-20), -20, 0, true, -20},  // 1.5 seconds after the peak.
        {1, linear(-20), -20, -0.8666667F, true, -20},
        {44, linear(-20), -20, -20, true, -20},
        {1, linear(-20), -20, -20, false, -20},  // 3 seconds after the peak.
        {1, linear(-10), -10, -10, false, -10},
        {1, 0, -10.8666667F, -10, false, -60},
        {60, 0, -60, -23.8666667F, false, -60},
        {1000, 0, -60, -60, false, -60},
        {1, linear(-0.11F), -0.11F, -0.11F, false, -0.11F},
        {1, linear(-0.09F), -0.09F, -0.09F, true, -0.09F},
        {1, 2, 6.0206F, 6.0206F, true, 6.0206F},
        {1, std::nanf(""), 6.0206F - 0.8666667F, 6.0206F, true, -60},
        {100, 0, -60, -42.5127F, false, -60},
        {1, inf, 60, 60, true, 60},
        {139, 0, -60, -21.4667F, false, -60},
    };
    MeterBallistics meter;
    MeterBallistics::Moment now{};
    int number = 0;
    for (const Step& step : steps) {
        MeterBallistics::Tick tick;
        for (int count = 0; count < step.ticks; ++count) {
            now += MeterBallistics::period;
            // The other side stays silent: each moves by itself.
            tick = meter.advance({0, step.sample}, now);
        }
        EXPECT_NEAR(tick.levels.right, step.bar, 0.01) << "step " << number;
        EXPECT_NEAR(tick.levels.holdRight, step.hold, 0.01) << "step " << number;
        EXPECT_EQ(tick.levels.clipped, step.clipped) << "step " << number;
        EXPECT_NEAR(tick.peakDB, step.heard, 0.01) << "step " << number;
        EXPECT_EQ(tick.levels.left, meterFloorDB);
        EXPECT_EQ(tick.levels.holdLeft, meterFloorDB);
        ++number;
    }
    meter.reset();
    EXPECT_EQ(meter.advance({0, 0}, now).levels, MeterLevels());
}

TEST_F(MeterTest, RunsForAsLongAsSomebodyLooks)
{
    m_flows->meter().removeUser();
    addUser();
    addUser();
    EXPECT_EQ(m_source->timesOpened, 1);
    play(100ms, 0.5F, 0.25F);
    EXPECT_NEAR(left(), -6.02, 0.01);
    EXPECT_NEAR(m_model->levels().right, -12.04, 0.01);
    EXPECT_NEAR(m_model->history().back(), -6.02, 0.01);

    m_flows->meter().removeUser();
    EXPECT_TRUE(m_source->isRunning());
    m_flows->meter().removeUser();
    m_flows->meter().removeUser();
    EXPECT_FALSE(m_source->isOpen());
    EXPECT_EQ(m_model->levels(), MeterLevels());
    EXPECT_EQ(m_model->history().back(), meterFloorDB);
    EXPECT_EQ(m_model->meterFormat(), std::nullopt);

    addUser();
    EXPECT_TRUE(m_source->isRunning());
    // The last view goes while the source is still being opened.
    m_flows->meter().removeUser();
    m_flows->meter().addUser();
    m_flows->meter().removeUser();
    m_scheduler.settle();
    EXPECT_FALSE(m_source->isOpen());
}

TEST_F(MeterTest, KeepsItsPaceAndItsSizeForTenMinutes)
{
    addUser();
    m_flows->sources().choose(mixer);
    m_scheduler.settle();
    const auto levels = test::countSignals(*m_model, &AppModel::levelsChanged);
    const auto findings = test::countSignals(*m_model, &AppModel::findingsChanged);
    for (int minute = 0; minute < 10; ++minute) {
        play(58s, 0.5F, 0.4F);
        play(2s, 0, 0);
    }
    EXPECT_EQ(m_source->timesOpened, 1);
    EXPECT_EQ(m_model->history().size(), AppModel::historyLength);
    EXPECT_NEAR(m_model->history()[539], -6.02, 0.01);
    EXPECT_EQ(m_model->history()[540], meterFloorDB) << "the last 2 seconds";
    // A bar that stands still tells nobody.
    EXPECT_LT(*levels, 10 * 30 * 5);
    EXPECT_EQ(*findings, 1);
    EXPECT_EQ(error(), QString());
}

TEST_F(MeterTest, TellsTheFindingsTheLoudestLevelEvery3Seconds)
{
    addUser();
    play(1s, linear(-8), 0);
    play(1900ms, linear(-30), linear(-30));
    EXPECT_TRUE(m_model->findings().empty());
    play(200ms, 0, 0);
    ASSERT_GE(m_model->findings().size(), 3U);
    EXPECT_EQ(m_model->findings()[1].title, u"Level good");
    play(3s, linear(-30), 0);
    EXPECT_EQ(m_model->findings()[1].title, u"Low: peak -30 dB");
    play(6200ms, 0, 0);
    EXPECT_EQ(m_model->findings()[1].title, u"No signal yet");
}

TEST_F(MeterTest, SaysWhyItIsEmptyOnceAndGoesOnTrying)
{
    m_sandbox.setVariable("VANTIRO_TRACE", "1");
    launch();
    m_model->setDevices(m_audio.devices());
    m_model->setSelected(mixer);
    addUser();
    play(1s, 0.5F, 0.5F);
    const auto other = addInterface(u"other"_s);
    other->openStatus = 16;
    const auto errors = test::countSignals(*m_model, &AppModel::errorMessageChanged);
    m_scheduler.settle();
    m_model->setDevices(m_audio.devices());
    m_model->setSelected(SourceRef::device(u"other"_s));
    m_scheduler.settle();
    EXPECT_EQ(error(), u"Vantiro cannot listen to Name of other. Reconnect it, or pick another source.");
    EXPECT_TRUE(trace().contains(u"meter: cannot create the IOProc: 16"_s)) << qPrintable(trace());
    EXPECT_FALSE(m_source->isOpen()) << "another source's level is no answer";
    EXPECT_EQ(m_model->levels(), MeterLevels());

    other->startStatus = 5;
    wait(1s);
    EXPECT_TRUE(other->isRunning());
    EXPECT_EQ(*errors, 1);
}

TEST_F(MeterTest, FollowsItsSource)
{
    addUser();
    const auto errors = test::countSignals(*m_model, &AppModel::errorMessageChanged);
    const auto selections = test::countSignals(*m_model, &AppModel::selectedChanged);
    play(1s, 0.5F, 0.5F);

    // A new rate.
    m_source->setRate(44'100);
    wait(1s);
    play(100ms, 0.5F, 0.5F);
    EXPECT_NEAR(left(), -6.02, 0.01);
    EXPECT_EQ(m_model->meterFormat(), (AppModel::MeterFormat{.sampleRate = 44'100, .channels = 2}));

    // Unplugged for a while, and back.
    m_audio.remove(u"mixer"_s);
    wait(10s);
    EXPECT_EQ(m_model->levels(), MeterLevels());
    m_source = addInterface(u"mixer"_s);
    wait(1s);
    play(100ms, 0.5F, 0.5F);
    EXPECT_NEAR(left(), -6.02, 0.01);

    // No block for 2 seconds; a silent one is a block.
    int opened = m_source->timesOpened;
    play(10s, 0, 0);
    wait(1900ms);
    play(100ms, 0, 0);
    EXPECT_EQ(m_source->timesOpened, opened);
    wait(2100ms);
    EXPECT_EQ(m_source->timesOpened, opened + 1);
    // It fails to open for a while.
    m_source->openStatus = 5;
    wait(4s);
    play(100ms, 0.5F, 0.5F);
    EXPECT_NEAR(left(), -6.02, 0.01);

    // Another pair of channels.
    opened = m_source->timesOpened;
    m_model->setFirstChannelOfSelection(2);
    m_scheduler.settle();
    EXPECT_EQ(m_source->timesOpened, opened + 1);

    // A program's tap ends and its program comes back.
    m_audio.programs = {{.pid = 7, .bundleID = u"mixxx"_s, .name = u"Mixxx"_s, .isPlaying = true}};
    m_model->setSelected(SourceRef::app(u"mixxx"_s));
    m_scheduler.settle();
    EXPECT_FALSE(m_source->isOpen());
    EXPECT_EQ(m_model->channelCount(), 2);
    EXPECT_EQ(m_audio.devicesAndTaps().size(), 2U);
    m_audio.programs.clear();
    wait(3s);
    m_audio.tapRate = 96'000;
    m_audio.programs = {{.pid = 8, .bundleID = u"mixxx"_s, .name = u"Mixxx"_s, .isPlaying = true}};
    wait(1s);
    EXPECT_EQ(m_model->meterFormat(), (AppModel::MeterFormat{.sampleRate = 96'000, .channels = 2}));

    EXPECT_EQ(*errors, 0) << qPrintable(error());
    EXPECT_EQ(*selections, 1);
}

TEST_F(MeterTest, DropsASourceThatWasOpenedTooLate)
{
    const auto other = addInterface(u"other"_s);
    m_flows->meter().addUser();
    m_model->setSelected(SourceRef::device(u"other"_s));
    m_scheduler.settle();
    EXPECT_FALSE(m_source->isOpen());
    EXPECT_TRUE(other->isRunning());
}

}  // namespace vantiro
