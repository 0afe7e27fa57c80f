// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/playback/TakePlayer.h"
#include "platform/pipewire/FilterStream.h"
#include "platform/pipewire/PipeWireAudio.h"
#include "platform/rig/RampSignal.h"
#include "tests/graph/StreamLinks.h"
#include "tests/graph/TapTest.h"
#include "tests/takes/PcmBytes.h"

#include <QFile>

#include <atomic>
#include <cmath>
#include <mutex>
#include <thread>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;
    using Sample = PcmLayout::Sample;

    const QString playerNode = u"vantiro-player"_s;
    constexpr std::int64_t graphRate = 48'000;

    /// Hears what the player sends into the graph, without a gap from its beginning on: silence while nothing comes.
    class Ear final : private AudioBlockHandler {
    public:
        Ear()
        {
            auto opened = FilterStream::open(std::make_shared<GraphMirror>(),
                std::make_unique<test::StreamPlan>(QStringList{playerNode}),
                {.nodeName = "vantiro-ear",
                    .sourceChannels = 2,
                    .channels = {0, 1},
                    .nominalRate = graphRate,
                    .forcedRate = std::nullopt,
                    .absence = FilterStream::Absence::silence});
            EXPECT_TRUE(opened && (*opened)->start(*this, {}) == 0);
            m_stream = opened ? *std::move(opened) : nullptr;
        }
        ~Ear() override { m_stream->stop(); }

        [[nodiscard]] double rate() const { return m_stream->currentRate(); }
        /// When it heard something first.
        [[nodiscard]] std::optional<Clock::time_point> firstHeard() const
        {
            const std::scoped_lock lock(m_mutex);
            return m_firstHeard;
        }
        /// What it heard of each channel.
        [[nodiscard]] std::array<std::vector<float>, 2> heard() const
        {
            const std::scoped_lock lock(m_mutex);
            return m_heard;
        }

    private:
        void process(const AudioBlock& block) noexcept override
        {
            const std::scoped_lock lock(m_mutex);
            for (std::size_t channel = 0; channel < 2; ++channel) {
                const AudioBuffer& buffer = block.buffers[channel];
                const std::span samples(buffer.samples, static_cast<std::size_t>(buffer.bytes) / sizeof(float));
                m_heard[channel].insert(m_heard[channel].end(), samples.begin(), samples.end());
                if (!m_firstHeard && std::ranges::any_of(samples, [](float sample) { return sample != 0; })) {
                    m_firstHeard = Clock::now();
                }
            }
        }

        mutable std::mutex m_mutex;
        std::array<std::vector<float>, 2> m_heard;
        std::optional<Clock::time_point> m_firstHeard;
        std::unique_ptr<CaptureStream> m_stream;
    };

    class PlaybackTest : public test::TapTest {
    protected:
        void SetUp() override
        {
            test::TapTest::SetUp();
            ASSERT_TRUE(PrivateGraph::givePortsToStreams());
        }

        /// The ramp's bytes in a stereo file of this layout.
        static QByteArray ramp(const PcmLayout& layout, std::int64_t first, std::int64_t frames)
        {
            QByteArray bytes;
            for (std::int64_t frame = first; frame < first + frames; ++frame) {
                for (int channel = 0; channel < layout.channels; ++channel) {
                    const std::int32_t number = RampSignal::sample(channel, frame);
                    bytes += layout.sample == Sample::int24
                        ? test::big(number).last(3)
                        : test::little(std::bit_cast<std::uint32_t>(RampSignal::value(channel, frame)));
                }
            }
            return bytes;
        }
        /// A take that plays the ramp from its frame `first` on; its path.
        [[nodiscard]] QString take(const PcmLayout& layout, std::int64_t frames) const
        {
            const QByteArray audio = ramp(layout, first, frames);
            const QString path = m_sandbox.path(u"take"_s);
            test::Sandbox::writeFile(
                path, layout.sample == Sample::int24 ? test::cafFile(layout, audio) : test::wavFile(layout, audio));
            return path;
        }
        [[nodiscard]] std::unique_ptr<TakePlayer> open(const QString& path)
        {
            auto opened = TakePlayer::open(path, audio(), {});
            EXPECT_TRUE(opened) << qPrintable(errorText(opened.error()));
            return opened ? *std::move(opened) : nullptr;
        }
        [[nodiscard]] PipeWireAudio& audio()
        {
            if (!m_audio) {
                m_audio = std::make_unique<PipeWireAudio>();
            }
            return *m_audio;
        }
        [[nodiscard]] static bool reaches(const TakePlayer& player, double seconds)
        {
            return test::waitFor([&] { return player.currentTime() >= seconds; });
        }
        /// The stretches of the take that were heard: where in the ear's time, which frame of the take, how many.
        static std::vector<test::Stretch> stretches(const Ear& ear)
        {
            std::vector<test::Stretch> found;
            const auto heard = ear.heard();
            for (int channel = 0; channel < 2; ++channel) {
                std::vector<std::int32_t> samples;
                std::ranges::transform(heard[static_cast<std::size_t>(channel)], std::back_inserter(samples),
                    [](float sample) { return static_cast<std::int32_t>(std::lround(sample * 8'388'608)); });
                std::vector<test::Stretch> column;
                const auto sounds = [](std::int32_t sample) { return sample != 0; };
                for (auto begin = std::ranges::find_if(samples, sounds); begin != samples.end();) {
                    const auto end = std::search_n(begin, samples.end(), 8, 0);
                    const auto report = RampSignal::check(std::span(begin, end), channel);
                    if (!report || (report->firstBreak && !report->jump)) {
                        ADD_FAILURE() << "frame " << begin - samples.begin() << " is not what is in the take";
                        break;
                    }
                    const std::int64_t length = report->firstBreak.value_or(end - begin);
                    column.push_back(
                        {.row = begin - samples.begin(), .frames = length, .content = report->start - first});
                    begin = std::find_if(begin + length, samples.end(), sounds);
                }
                EXPECT_TRUE(channel == 0 || column == found) << "the channels differ";
                found = column;
            }
            return found;
        }

        /// No number that is heard first is 0.
        static constexpr std::int64_t first = 1'000;
        static constexpr PcmLayout caf{
            .sample = Sample::int24, .order = std::endian::big, .sampleRate = graphRate, .channels = 2};
        static constexpr PcmLayout wav{
            .sample = Sample::float32, .order = std::endian::little, .sampleRate = graphRate, .channels = 2};

    private:
        std::unique_ptr<PipeWireAudio> m_audio;
    };

}  // namespace

TEST_F(PlaybackTest, EverySampleIsHeardOnceThroughPauseAndSeek)
{
    for (const PcmLayout& layout : {caf, wav}) {
        const Ear ear;
        const auto player = open(take(layout, 3 * graphRate));
        ASSERT_TRUE(player);
        ASSERT_TRUE(player->isConnected());
        player->play();
        ASSERT_TRUE(reaches(*player, 0.5));
        player->pause();
        std::uint64_t cycles = 0;
        EXPECT_TRUE(test::waitFor([&] {
            std::this_thread::sleep_for(100ms);
            return std::exchange(cycles, player->cycles()) == player->cycles();
        })) << "the output does not rest";
        const auto paused = static_cast<std::int64_t>(std::lround(player->currentTime() * graphRate));
        player->play();
        ASSERT_TRUE(reaches(*player, 1));
        player->seek(2);
        EXPECT_TRUE(test::waitFor([&] { return player->hasEnded(); }));
        EXPECT_EQ(player->currentTime(), 3);

        const auto heard = stretches(ear);
        ASSERT_EQ(heard.size(), 3U);
        EXPECT_EQ(heard[0].content, 0);
        EXPECT_EQ(heard[0].frames, paused);
        EXPECT_EQ(heard[1].content, paused);
        EXPECT_GE(heard[1].content + heard[1].frames, graphRate);
        EXPECT_EQ(heard[2].content, 2 * graphRate);
        EXPECT_EQ(heard[2].frames, graphRate);
        EXPECT_LT(heard[2].row - heard[1].row - heard[1].frames, graphRate / 10);
    }
}

TEST_F(PlaybackTest, SixHoursBeginAndAreSearchedWithoutAWait)
{
    constexpr std::int64_t hours = 6 * 3600;
    const QString path = take(caf, graphRate);
    QFile file(path);
    const qint64 start = file.size() - qint64{graphRate} * 6;
    const qint64 bytes = hours * graphRate * 6;
    const qint64 place = start - 12;
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.resize(start + bytes));
    // The length of the audio's chunk, and one sounding second in the fifth hour.
    ASSERT_TRUE(file.seek(place) && file.write(test::big(std::int64_t{bytes + 4})) == 8);
    constexpr std::int64_t later = std::int64_t{5} * 3600 * graphRate;
    ASSERT_TRUE(file.seek(start + later * 6) && file.write(ramp(caf, first + later, graphRate)) > 0);
    file.close();

    static_cast<void>(audio().isAvailable());
    // A busy machine gets three attempts.
    std::unique_ptr<Ear> ear;
    std::unique_ptr<TakePlayer> player;
    auto best = Clock::duration::max();
    for (int attempt = 0; attempt < 3 && best >= 200ms; ++attempt) {
        player.reset();
        ear = std::make_unique<Ear>();
        const auto before = Clock::now();
        player = open(path);
        ASSERT_TRUE(player);
        player->play();
        EXPECT_EQ(player->duration(), hours);
        ASSERT_TRUE(test::waitFor([&] { return ear->firstHeard().has_value(); }));
        best = std::min(best, *ear->firstHeard() - before);
    }
    EXPECT_LT(best, 200ms);
    ASSERT_TRUE(reaches(*player, 0.3));
    player->seek(5.0 * 3600);
    ASSERT_TRUE(reaches(*player, 5.0 * 3600 + 0.3));
    const auto heard = stretches(*ear);
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].content, 0);
    EXPECT_EQ(heard[1].content, later % (1 << 24));
    EXPECT_LT(heard[1].row - heard[0].row - heard[0].frames, graphRate / 10);
}

TEST_F(PlaybackTest, TheGraphKeepsItsRateAndATakeOfAnotherItsLength)
{
    PcmLayout layout = wav;
    layout.sampleRate = 44'100;
    const Ear ear;
    const auto player = open(take(layout, 44'100));
    ASSERT_TRUE(player);
    player->play();
    EXPECT_TRUE(test::waitFor([&] { return player->hasEnded(); }));
    EXPECT_EQ(ear.rate(), graphRate);
    const auto heard = ear.heard()[0];
    const auto sounds = [](float sample) { return std::abs(sample) > 0.001F; };
    const auto begin = std::ranges::find_if(heard, sounds);
    const auto end = std::find_if(heard.rbegin(), heard.rend(), sounds).base();
    EXPECT_NEAR(static_cast<double>(end - begin), graphRate, 100);
}

TEST_F(PlaybackTest, IsNobodysSourceAndNobodysUse)
{
    const auto player = open(take(caf, 3 * graphRate));
    ASSERT_TRUE(player);
    player->play();
    waitForStream(playerNode, true);
    link(playerNode, u"speakers"_s);
    ASSERT_TRUE(test::waitFor([&] { return player->cycles() > 10; }));
    EXPECT_TRUE(audio().processes().empty());
    EXPECT_EQ(audio().devices().size(), 3U);
    EXPECT_FALSE(audio().takeRate(u"speakers"_s)->setByOthers);

    unlink(playerNode, u"speakers"_s);
    const std::uint64_t cycles = player->cycles();
    const double position = player->currentTime();
    link(playerNode, u"headphones"_s);
    EXPECT_TRUE(test::waitFor([&] { return player->cycles() > cycles + 10; }));
    EXPECT_GT(player->currentTime(), position);
}

TEST_F(PlaybackTest, GoesOnBehindADaemonThatCameBack)
{
    auto ear = std::make_unique<Ear>();
    const auto player = open(take(caf, 3 * graphRate));
    ASSERT_TRUE(player);
    player->play();
    ASSERT_TRUE(reaches(*player, 0.3));
    m_graph->kill();
    EXPECT_TRUE(test::waitFor([&] { return !player->isConnected(); }));
    const auto position = static_cast<std::int64_t>(std::lround(player->currentTime() * graphRate));
    EXPECT_FALSE(player->hasEnded());
    ear.reset();
    ASSERT_TRUE(m_graph->restart());
    ear = std::make_unique<Ear>();
    EXPECT_TRUE(test::waitFor([&] {
        player->reconnect({});
        return player->isConnected();
    }));
    EXPECT_TRUE(test::waitFor([&] { return player->hasEnded(); }));
    const auto heard = stretches(*ear);
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_GE(heard[0].content, position);
    EXPECT_EQ(heard[0].content + heard[0].frames, 3 * graphRate);
}

}  // namespace vantiro
