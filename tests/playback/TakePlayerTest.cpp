// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/playback/TakePlayer.h"

#include "core/playback/PlaybackFeed.h"
#include "core/takes/TakeReader.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/Sandbox.h"
#include "tests/takes/PcmBytes.h"

#include <QFile>

#include <atomic>
#include <cmath>
#include <limits>
#include <semaphore>
#include <set>
#include <thread>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using Sample = PcmLayout::Sample;

    constexpr int cycle = 256;
    constexpr double rate = 48'000;

    PcmLayout layoutOf(Sample sample, std::endian order, int channels)
    {
        return {.sample = sample, .order = order, .sampleRate = rate, .channels = channels};
    }

    const PcmLayout stereo = layoutOf(Sample::int24, std::endian::big, 2);

    class TakePlayerTest : public test::SandboxTest {
    protected:
        /// A file of random samples, which become m_values.
        void write(const PcmLayout& layout, std::int64_t frames)
        {
            const auto samples = test::PcmSamples::random(layout, frames);
            m_values = samples.values;
            test::Sandbox::writeFile(m_path,
                layout.order == std::endian::big ? test::cafFile(layout, samples.bytes)
                                                 : test::wavFile(layout, samples.bytes));
        }
        [[nodiscard]] std::unique_ptr<TakePlayer> open()
        {
            auto opened = TakePlayer::open(m_path, m_audio, QStringLiteral("speakers"));
            EXPECT_TRUE(opened) << qPrintable(errorText(opened.error()));
            return opened ? *std::move(opened) : nullptr;
        }
        /// Asks until so many samples came that are no silence, or the end; all samples of such.
        [[nodiscard]] std::vector<float> hear(const TakePlayer& player, std::size_t samples = SIZE_MAX) const
        {
            std::vector<float> heard;
            static_cast<void>(test::waitFor([&] {
                for (bool isReady = true; isReady && heard.size() < samples && !player.hasEnded();) {
                    const std::size_t before = heard.size();
                    std::ranges::copy_if(m_audio.output()->pump(cycle), std::back_inserter(heard),
                        [](float value) { return value != 0; });
                    isReady = heard.size() > before;
                }
                return heard.size() >= samples || player.hasEnded();
            }));
            return heard;
        }
        /// From a frame on, what hear() is to give.
        [[nodiscard]] std::vector<float> values(
            std::int64_t first, std::size_t samples = SIZE_MAX, int channels = 2) const
        {
            std::span<const float> rest = std::span(m_values).subspan(static_cast<std::size_t>(first * channels));
            rest = rest.first(std::min(rest.size(), samples));
            std::vector<float> found;
            std::ranges::copy_if(rest, std::back_inserter(found), [](float value) { return value != 0; });
            return found;
        }

        test::FakeAudio m_audio;
        QString m_path = m_sandbox.path(QStringLiteral("take"));
        std::vector<float> m_values;
    };

    /// A file whose samples are the numbers of their frames, counted from 1.
    struct CountedFile {
        std::int64_t stated = 0;                         ///< Frames that it promises.
        std::int64_t frames = 0;                         ///< Frames that it gives.
        std::int64_t hangsAt = 0;                        ///< From this frame on the disk hangs; never if 0.
        std::counting_semaphore<>* isHanging = nullptr;  ///< Told then.
        std::counting_semaphore<>* goesOn = nullptr;     ///< Waited for then.
    };

    class CountingReader final : public TakeReader {
    public:
        static inline CountedFile nextFile;

        static Result<std::unique_ptr<TakeReader>> open(const QString& /*path*/)
        {
            return std::make_unique<CountingReader>();
        }

        [[nodiscard]] const Format& format() const override { return m_format; }
        [[nodiscard]] Result<std::int64_t> read(
            std::int64_t first, std::span<float* const> planes, std::int64_t frames) override
        {
            if (m_file.hangsAt > 0 && first >= m_file.hangsAt) {
                m_file.isHanging->release();
                m_file.goesOn->acquire();
            }
            const std::int64_t count = std::clamp<std::int64_t>(m_file.frames - first, 0, frames);
            for (std::int64_t frame = 0; frame < count; ++frame) {
                planes[0][frame] = static_cast<float>(first + frame + 1);
            }
            return count;
        }
        [[nodiscard]] bool isParallel() const override { return false; }

    private:
        CountedFile m_file = nextFile;
        Format m_format{.sampleRate = rate, .channels = 1, .frames = m_file.stated};
    };

    class CountedTakeTest : public TakePlayerTest {
    protected:
        void SetUp() override
        {
            test::Sandbox::writeFile(m_path, "no linear samples");
            TakeReader::setDecoder(CountingReader::open);
        }
        void TearDown() override { TakeReader::setDecoder(nullptr); }
    };

}  // namespace

TEST_F(TakePlayerTest, HandsOutTheWholeFileAsItIsAndThenEnds)
{
    for (const PcmLayout& layout : {stereo, layoutOf(Sample::int16, std::endian::little, 1),
             layoutOf(Sample::float32, std::endian::little, 2), layoutOf(Sample::int24, std::endian::big, 6)}) {
        write(layout, 100'000);
        const auto player = open();
        ASSERT_TRUE(player);
        EXPECT_FALSE(m_audio.output()->isActive());
        EXPECT_EQ(m_audio.output()->request().sampleRate, rate);
        EXPECT_EQ(m_audio.output()->request().channels, layout.channels);
        EXPECT_EQ(m_audio.output()->request().output, QStringLiteral("speakers"));
        EXPECT_EQ(player->duration(), 100'000 / rate);
        EXPECT_EQ(player->currentTime(), 0);
        player->play();
        EXPECT_EQ(hear(*player), values(0, SIZE_MAX, layout.channels));
        EXPECT_TRUE(player->hasEnded());
        EXPECT_EQ(player->currentTime(), player->duration());
        const auto peakOf = [&](std::size_t channel) {
            float peak = 0;
            for (; channel < m_values.size(); channel += static_cast<std::size_t>(layout.channels)) {
                peak = std::max(peak, std::abs(m_values[channel]));
            }
            return peak;
        };
        EXPECT_EQ(player->takePeaks(), (std::pair{peakOf(0), peakOf(layout.channels == 1 ? 0 : 1)}));
        EXPECT_EQ(player->takePeaks(), (std::pair{0.0F, 0.0F}));
    }
}

TEST_F(TakePlayerTest, GoesOnExactlyWhereItWasPausedOrSentTo)
{
    write(stereo, 200'000);
    const auto player = open();
    ASSERT_TRUE(player);
    player->play();
    EXPECT_EQ(hear(*player, 20'000), values(0, 20'480));
    player->pause();
    EXPECT_FALSE(m_audio.output()->isActive());
    EXPECT_EQ(player->currentTime(), 10'240 / rate);
    player->play();
    EXPECT_EQ(hear(*player, 2'000), values(10'240, 2'048));

    // More often than there is room for, so that the queue is full of what will not be played.
    player->pause();
    for (const double target : {3.0, 0.5, 1.0, 2.0}) {
        player->seek(target);
        EXPECT_EQ(player->currentTime(), target);
    }
    player->play();
    EXPECT_EQ(hear(*player, 100'000), values(96'000, 100'352));
    player->seek(0.25);
    EXPECT_EQ(player->currentTime(), 0.25);
    EXPECT_EQ(hear(*player), values(12'000));
    ASSERT_TRUE(player->hasEnded());

    for (const auto& [wanted, held] : {std::pair{-1.0, 0.0}, {std::nan(""), 0.0}, {1e300, player->duration()}}) {
        player->seek(wanted);
        EXPECT_FALSE(player->hasEnded());
        EXPECT_EQ(player->currentTime(), held);
    }
    EXPECT_TRUE(hear(*player).empty());
    EXPECT_TRUE(player->hasEnded());
}

TEST_F(TakePlayerTest, PlaysADeletedFileOnAndATruncatedOneAsFarAsItGoes)
{
    write(stereo, 400'000);
    auto player = open();
    ASSERT_TRUE(player);
    QFile::remove(m_path);
    player->play();
    EXPECT_EQ(hear(*player), values(0));

    write(stereo, 400'000);
    player = open();
    ASSERT_TRUE(player);
    player->play();
    EXPECT_EQ(hear(*player, 1), values(0, 512));
    const qint64 start = QFile(m_path).size() - qint64{400'000} * 6;
    ASSERT_TRUE(QFile::resize(m_path, start + qint64{300'000} * 6 + 1));
    EXPECT_EQ(hear(*player), values(256, std::size_t{2} * 299'744));
    EXPECT_TRUE(player->hasEnded());
    EXPECT_EQ(player->currentTime(), 300'000 / rate);
    EXPECT_EQ(player->duration(), 300'000 / rate);
}

TEST_F(TakePlayerTest, SendsNothingToSpeakersThatIsNoNumber)
{
    const PcmLayout layout = layoutOf(Sample::float32, std::endian::little, 1);
    QByteArray bytes;
    constexpr float infinite = std::numeric_limits<float>::infinity();
    for (const float value : {0.5F, infinite, -infinite, std::nanf(""), -8.0F, 0.25F}) {
        bytes += test::little(std::bit_cast<std::uint32_t>(value));
    }
    test::Sandbox::writeFile(m_path, test::wavFile(layout, bytes));
    const auto player = open();
    ASSERT_TRUE(player);
    player->play();
    EXPECT_EQ(m_audio.output()->pump(8), (std::vector{0.5F, 0.0F, 0.0F, 0.0F, -8.0F, 0.25F, 0.0F, 0.0F}));
    EXPECT_EQ(player->takePeaks(), (std::pair{8.0F, 8.0F}));
}

TEST_F(TakePlayerTest, RefusesWhatHoldsNoAudio)
{
    for (const QByteArray& bytes : {QByteArray(), QByteArray("some text"), test::cafFile(stereo, {})}) {
        test::Sandbox::writeFile(m_path, bytes);
        EXPECT_FALSE(TakePlayer::open(m_path, m_audio, {}));
    }
    QFile::remove(m_path);
    EXPECT_FALSE(TakePlayer::open(m_path, m_audio, {}));
    EXPECT_EQ(m_audio.outputsOpened, 0);
}

TEST_F(TakePlayerTest, GoesOnAtAnotherOutput)
{
    write(stereo, 100'000);
    m_audio.playbackStatus = ENODEV;
    const auto player = open();
    ASSERT_TRUE(player);
    EXPECT_FALSE(player->isConnected());
    player->play();
    m_audio.playbackStatus = 0;
    player->reconnect(QStringLiteral("headphones"));
    EXPECT_TRUE(player->isConnected());
    EXPECT_TRUE(m_audio.output()->isActive());
    EXPECT_EQ(hear(*player, 512), values(0, 512));

    m_audio.output()->vanish();
    EXPECT_FALSE(player->isConnected());
    const std::uint64_t cycles = player->cycles();
    m_audio.output()->pump(cycle);
    EXPECT_EQ(player->cycles(), cycles);
    player->pause();
    const auto former = m_audio.output();
    player->reconnect({});
    EXPECT_FALSE(former->isOpen());
    EXPECT_TRUE(player->isConnected());
    EXPECT_FALSE(m_audio.output()->isActive());
    player->play();
    EXPECT_EQ(hear(*player), values(256));
}

TEST_F(CountedTakeTest, EndsWhereTheFileDoesWhateverItsHeaderEstimates)
{
    for (const std::int64_t stated : {40'000, 60'000}) {
        CountingReader::nextFile = {.stated = stated, .frames = 50'000};
        const auto player = open();
        ASSERT_TRUE(player);
        player->play();
        const std::vector<float> heard = hear(*player);
        EXPECT_EQ(heard.size(), 50'000U);
        EXPECT_EQ(heard.back(), 50'000);
        EXPECT_EQ(player->duration(), 50'000 / rate);
    }
}

TEST_F(CountedTakeTest, WaitsForNoDisk)
{
    // The reading thread outlives the player, and this test.
    static std::counting_semaphore<> isHanging(0);
    static std::counting_semaphore<> goesOn(0);
    CountingReader::nextFile = {
        .stated = 500'000, .frames = 500'000, .hangsAt = 20'000, .isHanging = &isHanging, .goesOn = &goesOn};
    auto player = open();
    ASSERT_TRUE(player);
    player->play();
    ASSERT_TRUE(isHanging.try_acquire_for(10s));
    EXPECT_EQ(hear(*player, 20'480).size(), 20'480U);
    EXPECT_EQ(m_audio.output()->pump(4), std::vector(4, 0.0F));
    EXPECT_EQ(player->currentTime(), 20'480 / rate);
    goesOn.release(1);
    EXPECT_EQ(hear(*player, 1).front(), 20'481);

    ASSERT_TRUE(isHanging.try_acquire_for(10s));
    const auto before = std::chrono::steady_clock::now();
    player->seek(1);
    player->pause();
    player.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - before, 1s);
    goesOn.release(100);
}

TEST(PlaybackFeedTest, KeepsWhatALaterSeekReadBeforeItWasToldOfIt)
{
    PlaybackQueue queue(1, 2, 4);
    PlaybackFeed feed(queue, 1);
    feed.setHeld(false);
    feed.setGeneration(2);
    for (const std::uint64_t generation : {1U, 3U}) {
        std::ranges::fill(queue.nextSlot(), static_cast<float>(generation));
        queue.push({.generation = generation, .first = 0, .frames = 2, .isEnd = true});
    }
    std::vector<float> heard(3);
    feed.fill(heard);
    EXPECT_EQ(heard, std::vector(3, 0.0F));
    feed.setGeneration(3);
    feed.fill(heard);
    EXPECT_EQ(heard, (std::vector{3.0F, 3.0F, 0.0F}));
    EXPECT_TRUE(feed.hasEnded(3));
}

TEST_F(CountedTakeTest, HandsOutNothingFromBeforeASeekWheneverItComes)
{
    CountingReader::nextFile = {.stated = 10'000'000, .frames = 10'000'000};
    const auto player = open();
    ASSERT_TRUE(player);
    player->play();
    std::atomic<bool> isOver = false;
    std::vector<float> heard;
    std::thread speaker([&] {
        while (!isOver) {
            std::ranges::copy(m_audio.output()->pump(cycle), std::back_inserter(heard));
            std::this_thread::yield();
        }
    });
    std::set<float> beginnings{1};
    for (int round = 1; round <= 100; ++round) {
        player->seek(round);
        beginnings.insert(static_cast<float>(round * rate + 1));
        const bool isWaited = round % 10 == 0;
        EXPECT_TRUE(!isWaited || test::waitFor([&] { return player->currentTime() > round + 0.1; }));
        if (round % 3 == 0) {
            player->pause();
            EXPECT_GE(player->currentTime(), round);
            player->play();
        }
        EXPECT_LT(player->currentTime(), round + 90);
    }
    isOver = true;
    speaker.join();
    std::erase(heard, 0.0F);
    float before = 0;
    for (const float value : heard) {
        ASSERT_TRUE(value == before + 1 || beginnings.contains(value)) << value << " behind " << before;
        before = value;
    }
}

}  // namespace vantiro
