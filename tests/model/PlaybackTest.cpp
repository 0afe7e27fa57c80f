// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/Desk.h"
#include "core/foundation/Decibels.h"
#include "core/takes/TakeReader.h"
#include "tests/model/ModelTest.h"
#include "tests/takes/PcmBytes.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using namespace std::chrono_literals;

    constexpr int playedRate = 9000;
    constexpr int framesATick = playedRate / 30;
    constexpr std::chrono::nanoseconds oneTick{1'000'000'000 / 30};

    /// Whose header promises 20000 frames. There are 5000 more, or a disk that gives none behind the 10000th.
    class EstimatedTake final : public TakeReader {
    public:
        static inline bool diskFails;

        static Result<std::unique_ptr<TakeReader>> open(const QString& /*path*/)
        {
            return std::make_unique<EstimatedTake>();
        }
        [[nodiscard]] const Format& format() const override { return m_format; }
        [[nodiscard]] Result<std::int64_t> read(
            std::int64_t first, std::span<float* const> planes, std::int64_t frames) override
        {
            if (diskFails && first > 10'000) {
                return captureFailure(u"no disk"_s);
            }
            const std::int64_t count = std::clamp<std::int64_t>(25'000 - first, 0, frames);
            std::fill_n(planes[0], count, 0.5F);
            return count;
        }
        [[nodiscard]] bool isParallel() const override { return false; }

    private:
        Format m_format{.sampleRate = playedRate, .channels = 1, .frames = 20'000};
    };

    class PlaybackTest : public test::ModelTest {
    protected:
        void open()
        {
            m_recorder = {};
            launch();
            m_departure = std::make_unique<Departure>(*m_model, services(), [] { });
            m_desk = std::make_unique<Desk>(*m_model, *m_flows, *m_departure, Desk::Doors{});
        }

        /// The loudest magnitude of a tick's frames on a channel, never 0: some are full scale.
        [[nodiscard]] static double magnitude(int tick, int channel)
        {
            return tick % 5 == 4 ? 1 - channel * 0.5 : (channel == 0 ? 0.7 : 0.4) / (1 + tick % 7);
        }

        /// A take of so many ticks.
        [[nodiscard]] Take makeTake(const QString& name, int ticks, int channels = 2) const
        {
            const PcmLayout layout{.sample = PcmLayout::Sample::int16,
                .order = std::endian::little,
                .sampleRate = playedRate,
                .channels = channels};
            QByteArray audio;
            for (int frame = 0; frame < ticks * framesATick; ++frame) {
                for (int channel = 0; channel < channels; ++channel) {
                    const int tick = frame / framesATick;
                    const double share = frame % framesATick == 100 ? 1 : 0.5;
                    audio += test::little(
                        static_cast<std::int16_t>(-std::lround(32'768 * share * magnitude(tick, channel))));
                }
            }
            const QString path = m_sandbox.path(name);
            test::Sandbox::writeFile(path, test::cafFile(layout, audio));
            return {.path = path, .created = QDateTime({2026, 9, 19}, {20, 0}, Qt::UTC), .seconds = ticks / 30.0};
        }

        void play(const Take& take)
        {
            m_flows->playback().play(take);
            m_scheduler.settle();
        }
        /// So many frames of the file are heard.
        void hear(int frames)
        {
            EXPECT_TRUE(test::waitFor([&] {
                for (bool isReady = true; isReady && frames > 0;) {
                    const std::vector<float> frame = m_audio.output()->pump(1);
                    isReady = !frame.empty() && frame.front() != 0;
                    frames -= isReady ? 1 : 0;
                }
                return frames == 0;
            }));
        }
        /// Time goes on, and somebody listens or not.
        void pass(std::chrono::milliseconds time, bool listens)
        {
            for (; time > 0ms; time -= 50ms) {
                if (listens) {
                    m_audio.output()->pump(1);
                }
                m_scheduler.advance(50ms);
            }
        }
        /// The take that is on the deck, "paused" and the message.
        [[nodiscard]] QString state() const
        {
            const auto& playing = m_model->playing();
            return (playing ? playing->name() : u"-"_s) + (m_model->playbackPaused() ? u" paused"_s : QString())
                + (error().isEmpty() ? QString() : u": "_s + error());
        }

        std::unique_ptr<Departure> m_departure;
        std::unique_ptr<Desk> m_desk;
        const QString m_noOutput =
            u"There is no output to play on. Connect speakers or headphones, then press Play again."_s;
    };

}  // namespace

TEST_F(PlaybackTest, ShowsTheLevelsOfTheFileItself)
{
    for (const int channels : {1, 2}) {
        open();
        constexpr int ticks = 30;
        play(makeTake(u"levels.caf"_s, ticks, channels));
        ASSERT_TRUE(m_model->playing());
        MeterLevels expected;
        for (int tick = 0; tick < ticks - 1; ++tick) {
            hear(framesATick);
            m_scheduler.advance(oneTick);
            const float left = decibels(static_cast<float>(magnitude(tick, 0)));
            const float right = channels == 1 ? left : decibels(static_cast<float>(magnitude(tick, 1)));
            expected = {.left = left,
                .right = right,
                .holdLeft = std::max(expected.holdLeft - 0.4F, left),
                .holdRight = std::max(expected.holdRight - 0.4F, right),
                .clipped = tick % 5 == 4};
            const MeterLevels& shown = m_model->shownLevels();
            EXPECT_NEAR(shown.left, expected.left, 0.01) << tick;
            EXPECT_NEAR(shown.right, expected.right, 0.01) << tick;
            EXPECT_NEAR(shown.holdLeft, expected.holdLeft, 0.01) << tick;
            EXPECT_NEAR(shown.holdRight, expected.holdRight, 0.01) << tick;
            EXPECT_EQ(shown.clipped, expected.clipped) << tick;
            EXPECT_EQ(m_model->shownHistory().back(), std::max(shown.left, shown.right));
            EXPECT_NEAR(m_model->playbackPosition(), (tick + 1) / 30.0, 1e-9);
        }
        EXPECT_NEAR(m_model->shownHistory()[AppModel::historyLength - ticks + 1], decibels(0.7F), 0.01);
        EXPECT_EQ(m_model->shownHistory()[AppModel::historyLength - ticks], meterFloorDB);
    }
}

TEST_F(PlaybackTest, PausesSeeksAndEndsWithoutATrace)
{
    open();
    m_model->setSelected(mixer);
    m_model->setDjName(u" Zoë "_s);
    const Take take = makeTake(u"a.caf"_s, 300);
    play(take);
    EXPECT_EQ(m_model->playbackLength(), 10);
    ASSERT_TRUE(m_model->playingTags());
    EXPECT_EQ(m_model->playingTags()->artist, u"Zoë"_s);
    hear(framesATick);
    m_scheduler.advance(oneTick);
    const MeterLevels frozen = m_model->playbackLevels();
    const auto sought = test::countSignals(*m_model, &AppModel::playbackSought);
    DeckPlayback& deck = m_flows->playback();

    deck.play(take);
    EXPECT_EQ(state(), u"a paused");
    const std::vector<std::pair<std::function<void()>, double>> moves{
        {[&] { deck.seek(1.0); }, 9.99},
        {[&] { deck.step(60); }, 9.99},
        {[&] { deck.seek(-1); }, 0},
        {[&] { deck.seek(std::nan("")); }, 0},
        {[&] { deck.step(5); }, 5},
        {[&] { deck.step(-60); }, 0},
        {[&] { m_desk->seekPlayback(0.25); }, 2.5},
    };
    for (const auto& [move, place] : moves) {
        move();
        EXPECT_NEAR(m_model->playbackPosition(), place, 1e-3);
    }
    EXPECT_EQ(std::size_t(*sought), moves.size());
    pass(10s, false);
    EXPECT_EQ(state(), u"a paused") << "who pauses needs no output";
    EXPECT_EQ(m_model->playbackLevels(), frozen);
    EXPECT_EQ(m_desk->deckTwin().left(13), u"Paused, 00:02");

    deck.play(take);
    deck.seek(0.999);
    hear(90);
    EXPECT_TRUE(test::waitFor([&] {
        m_audio.output()->pump(framesATick);
        m_scheduler.advance(oneTick);
        return !m_model->playing();
    }));
    EXPECT_EQ(state(), u"-");
    EXPECT_EQ(m_model->deckState(), DeckState{.kind = DeckState::Kind::ready});
    EXPECT_FALSE(m_model->playingTags());
    EXPECT_EQ(m_model->playbackLevels(), MeterLevels{});
    EXPECT_TRUE(std::ranges::all_of(m_model->playbackHistory(), [](float value) { return value == meterFloorDB; }));
    EXPECT_FALSE(m_audio.output()->isOpen());
}

TEST_F(PlaybackTest, RefusesWhatItCannotOrMustNotPlay)
{
    const Take take = makeTake(u"a.caf"_s, 30);
    const Take other = makeTake(u"b.caf"_s, 30);
    const Take gone{.path = m_sandbox.path(u"not\nthere.caf"_s), .created = {}};
    const RecorderState running = test::takeState(u"/a.caf"_s, u"mixer"_s);
    const QString takeFirst = u"-: Stop the take first. Playback during a take could end up in the recording."_s;
    const QString cannot = u"-: Vantiro cannot play notthere.caf. Show it in Finder and open it in another player: "
                           "the file may still be fine."_s;
    using Case = std::tuple<const char*, std::function<void(DeckPlayback&)>, QString>;
    const std::vector<Case> cases{
        {"a take runs", [&](auto& deck) { runTake(running), deck.play(take); }, takeFirst},
        {"a take starts", [&](auto& deck) { m_model->setStarting(true), deck.play(take); }, takeFirst},
        {"a take begins meanwhile", [&](auto& deck) { deck.play(take), runTake(running); }, u"-"_s},
        {"no file", [&](auto& deck) { deck.play(gone); }, cannot},
        {"stopped meanwhile", [&](auto& deck) { deck.play(take), deck.stopPlayback(); }, u"-"_s},
        {"another one meanwhile", [&](auto& deck) { deck.play(take), deck.play(other); }, u"b"_s},
        {"pressed twice in haste", [&](auto& deck) { deck.play(take), deck.play(take); }, u"a"_s},
        {"a broken one after one that plays", [&](auto& deck) { play(take), deck.play(gone); }, cannot},
    };
    for (const auto& [name, press, shown] : cases) {
        open();
        press(m_flows->playback());
        m_scheduler.settle();
        EXPECT_EQ(state(), shown) << name;
    }
    launch(AppModel::Kind::sample);
    play(take);
    EXPECT_EQ(state(), u"-");
}

TEST_F(PlaybackTest, WaitsForAnOutputAndThenSaysThatThereIsNone)
{
    const Take take = makeTake(u"a.caf"_s, 3000);
    for (const bool opens : {true, false}) {
        open();
        m_audio.playbackStatus = opens ? 0 : ENODEV;
        play(take);
        pass(1900ms, false);
        EXPECT_EQ(state(), u"a");
        pass(200ms, false);
        EXPECT_EQ(state(), u"a paused: "_s + m_noOutput);
        m_model->setError(std::nullopt);
        pass(10s, false);
        EXPECT_EQ(state(), u"a paused") << "said twice";

        m_audio.playbackStatus = 0;
        m_desk->togglePause();
        pass(100ms, false);
        hear(100);
        EXPECT_EQ(state(), u"a");
        // Later as well: it goes on at another one, or there is none.
        m_audio.output()->vanish();
        pass(300ms, false);
        hear(100);
        pass(5s, true);
        EXPECT_EQ(state(), u"a");
        m_audio.playbackStatus = ENODEV;
        m_audio.output()->vanish();
        pass(2100ms, false);
        EXPECT_EQ(state(), u"a paused: "_s + m_noOutput);
        m_audio.playbackStatus = 0;
        m_model->setError(std::nullopt);
    }
}

TEST_F(PlaybackTest, TellsTheLengthThatWasReadAndADiskThatFailed)
{
    TakeReader::setDecoder(EstimatedTake::open);
    const Take take{.path = m_sandbox.path(u"a.m4a"_s), .created = {}};
    test::Sandbox::writeFile(take.path, "no linear samples");
    for (const bool fails : {false, true}) {
        EstimatedTake::diskFails = fails;
        open();
        play(take);
        EXPECT_EQ(m_model->playbackLength(), 20'000.0 / playedRate);
        hear(12'000);
        double length = 0;
        EXPECT_TRUE(test::waitFor([&] {
            m_audio.output()->pump(framesATick);
            m_scheduler.advance(oneTick);
            length = m_model->playing() ? m_model->playbackLength() : length;
            return !m_model->playing();
        }));
        EXPECT_EQ(length, (fails ? 20'000.0 : 25'000.0) / playedRate);
        EXPECT_EQ(state(),
            fails ? u"-: Vantiro cannot play a.m4a. Show it in Finder and open it in another player: the file may "
                    "still be fine."_s
                  : u"-"_s);
    }
    TakeReader::setDecoder(nullptr);
}

TEST_F(PlaybackTest, EndsWithTheProgramThoughCopiesKeepItButNotWithTheWindow)
{
    open();
    play(makeTake(u"a.caf"_s, 300));
    m_model->setExporting(u"/b.caf"_s, 0.5);
    m_departure->close(Departure::Tray::lives);
    m_departure->quit();
    EXPECT_EQ(state(), u"a");
    m_departure->quitWhenDone();
    EXPECT_EQ(state(), u"-");
}

TEST_F(PlaybackTest, IsHeardWhereTheUserWants)
{
    open();
    const auto menu = [&] {
        QStringList lines;
        for (const QVariant& entry : m_desk->outputEntries()) {
            const QVariantMap line = entry.toMap();
            lines << line[u"text"_s].toString() + (line[u"lit"_s].toBool() ? u"*"_s : QString());
        }
        return lines;
    };
    addInterface(u"mixer"_s);
    m_audio.add({.uid = u"amp"_s, .name = u"The\namp"_s, .outputChannels = 2}, {});
    EXPECT_EQ(menu(), (QStringList{u"Default output*"_s, u"The amp"_s}));
    play(makeTake(u"a.caf"_s, 300));
    EXPECT_EQ(m_audio.output()->request().output, QString());
    m_desk->chooseOutput(m_desk->outputEntries()[1].toMap()[u"id"_s].toString());
    EXPECT_EQ(m_audio.output()->request().output, u"amp");
    hear(100);
    const int opened = m_audio.outputsOpened;
    m_desk->chooseOutput(m_desk->outputEntries()[1].toMap()[u"id"_s].toString());
    EXPECT_EQ(m_audio.outputsOpened, opened + 1) << "the choice is not made anew";
    m_desk->chooseOutput(u"output:nowhere"_s);
    m_audio.remove(u"amp"_s);
    m_model->flush();
    open();
    EXPECT_EQ(menu(), (QStringList{u"Default output"_s, u"The amp, not connected*"_s}));
    play(makeTake(u"a.caf"_s, 300));
    EXPECT_EQ(m_audio.output()->request().output, u"amp");
}

TEST_F(PlaybackTest, EachKeyDoesWhatItSays)
{
    open();
    const Take older = makeTake(u"older.caf"_s, 300);
    Take newer = makeTake(u"newer.caf"_s, 300);
    newer.created = newer.created.addSecs(60);
    m_model->setTakes({newer, older});
    m_model->setSelected(mixer);
    EXPECT_TRUE(m_desk->playLastEnabled());
    m_desk->playLastTake();
    m_scheduler.settle();
    EXPECT_EQ(state(), u"newer");
    EXPECT_EQ(m_desk->takeNumber(), 2);
    play(older);
    EXPECT_EQ(m_desk->takeNumber(), 1);
    const std::vector<std::pair<std::function<void()>, QString>> presses{
        {[&] { m_desk->pressDeck(); }, u"older paused 0:00"_s},
        {[&] { m_desk->pressPlaybackKey(Qt::Key_Right, Qt::NoModifier, true); }, u"older paused 0:05"_s},
        {[&] { m_desk->pressPlaybackKey(Qt::Key_Left, Qt::ShiftModifier, false); }, u"older paused 0:00"_s},
        {[&] { m_desk->pressPlaybackKey(Qt::Key_Space, Qt::NoModifier, true); }, u"older paused 0:00"_s},
        {[&] { m_desk->pressPlaybackKey(Qt::Key_Space, Qt::ControlModifier, false); }, u"older paused 0:00"_s},
        {[&] { m_desk->pressPlaybackKey(Qt::Key_Space, Qt::NoModifier, false); }, u"older 0:00"_s},
        {[&] { m_desk->pressKey(); }, u"- 0:00"_s},
        {[&] { play(older), m_desk->pressPanelKey(); }, u"- 0:00"_s},
    };
    for (const auto& [press, shown] : presses) {
        press();
        EXPECT_EQ(state() + u' ' + m_desk->positionText(), shown);
    }
    EXPECT_FALSE(m_desk->pressPlaybackKey(Qt::Key_Space, Qt::NoModifier, false));
    EXPECT_EQ(m_desk->takeNumber(), 3);
    EXPECT_TRUE(m_recorder.requests.empty());
    m_model->setStarting(true);
    EXPECT_FALSE(m_desk->playLastEnabled());
}

}  // namespace vantiro
