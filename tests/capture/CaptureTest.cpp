// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/SourceCapture.h"
#include "tests/capture/SoundFile.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/Sandbox.h"

#include <QFileInfo>

#include <cerrno>
#include <thread>

namespace vantiro::test {

using namespace Qt::StringLiterals;

class CaptureTest : public SandboxTest {
protected:
    using Channels = std::optional<std::vector<std::int64_t>>;

    Result<std::unique_ptr<Capture>> open(
        const Channels& channels = {}, const std::optional<QString>& path = {}, const QString& uid = u"mixer"_s)
    {
        return Capture::open({.deviceUID = uid, .channels = channels, .filePath = path}, m_audio, posixTakeStorage());
    }

    std::unique_ptr<Capture> started(const Channels& channels = {}, const std::optional<QString>& path = {})
    {
        auto capture = open(channels, path).value();
        EXPECT_TRUE(capture->start());
        return capture;
    }

    FakeAudio m_audio;
    std::shared_ptr<FakeSource> m_source = m_audio.add(u"mixer"_s, u"Mixer"_s, {2, 2});
    QString m_path = m_sandbox.path(u"mix.caf"_s);
};

TEST_F(CaptureTest, SaysWhyItCannotOpen)
{
    m_audio.add(u"speaker"_s, u"Speaker"_s, {});
    const QString outOfRange = u"Mixer has input channels 1 to 4, asked for "_s;
    const QString nowhere = m_sandbox.path(u"missing/mix.caf"_s);
    for (const auto& [uid, channels, status, path, text] :
        std::vector<std::tuple<QString, Channels, int, QString, QString>>{
            {u"gone"_s, {}, 0, m_path, u"device not connected: gone"_s},
            {u"speaker"_s, {}, 0, m_path, u"Speaker has no input channels"_s},
            {u"mixer"_s, std::vector<std::int64_t>{}, 0, m_path, outOfRange + u"[]"_s},
            {u"mixer"_s, {{0}}, 0, m_path, outOfRange + u"[0]"_s},
            {u"mixer"_s, {{4, 5}}, 0, m_path, outOfRange + u"[4, 5]"_s},
            {u"mixer"_s, {}, EBUSY, m_path, u"cannot create the IOProc: 16"_s},
            {u"mixer"_s, {}, 0, nowhere, u"cannot create %1: 2"_s.arg(nowhere)}}) {
        m_source->openStatus = status;
        const auto capture = open(channels, path, uid);
        ASSERT_FALSE(capture) << qPrintable(text);
        EXPECT_EQ(errorText(capture.error()), text);
        EXPECT_FALSE(QFileInfo::exists(path));
        EXPECT_FALSE(m_source->isOpen());
    }
    const auto program = SourceCapture::open(
        {.source = SourceRef::app(u"org.mixxx"_s), .channels = {}, .filePath = {}}, m_audio, posixTakeStorage());
    ASSERT_FALSE(program);
    EXPECT_EQ(errorText(program.error()), u"org.mixxx is not running"_s);
}

TEST_F(CaptureTest, TakesTheFirstTwoChannelsUnlessToldOtherwise)
{
    m_audio.add(u"mono"_s, u"Mono"_s, {1});
    m_audio.add(u"stereo"_s, u"Stereo"_s, {2});
    m_audio.add(u"eight"_s, u"Eight"_s, std::vector<std::int64_t>(8, 1));
    for (const auto& [uid, wanted, channels] :
        std::vector<std::tuple<QString, Channels, std::vector<std::int64_t>>>{{u"mono"_s, {}, {1}},
            {u"stereo"_s, {}, {1, 2}}, {u"eight"_s, {}, {1, 2}}, {u"eight"_s, {{7, 3}}, {7, 3}}}) {
        EXPECT_EQ(open(wanted, {}, uid).value()->channels(), channels) << qPrintable(uid);
    }
}

TEST_F(CaptureTest, PutsTheWantedChannelsOfAnyLayoutOfBuffersIntoTheFile)
{
    for (const auto& [layout, wanted] :
        std::vector<std::pair<std::vector<std::int64_t>, std::vector<std::size_t>>>{{{4}, {3, 4}},
            {{1, 1, 1, 1}, {4, 2}}, {{2, 2}, {4}}, {{1, 2, 3}, {6, 1, 3}}, {{2, 4, 1}, {5, 5, 7, 2}}, {{8}, {8, 1}}}) {
        m_audio.remove(u"mixer"_s);
        m_source = m_audio.add(u"mixer"_s, u"Mixer"_s, layout);
        const auto capture = started(std::vector<std::int64_t>(wanted.begin(), wanted.end()), m_path);
        const auto width = static_cast<std::size_t>(capture->device().inputChannels);
        // The second block is longer than the chunks in which it is worked on.
        const std::vector<int> numbers = noise(width * 20'500);
        std::vector<int> expected;
        std::size_t frame = 0;
        for (const std::size_t end : {500U, 20'500U}) {
            std::vector<std::vector<float>> block(width);
            for (; frame < end; ++frame) {
                for (std::size_t channel = 0; channel < width; ++channel) {
                    block[channel].push_back(static_cast<float>(numbers[frame * width + channel] / 8388608.0));
                }
                for (const std::size_t channel : wanted) {
                    expected.push_back(numbers[frame * width + channel - 1]);
                }
            }
            m_source->deliver(block);
        }
        EXPECT_EQ(capture->stop().fileFrames, 20'500);
        const SoundFile file = SoundFile::read(m_path);
        EXPECT_EQ(file.channels, wanted.size());
        EXPECT_EQ(file.sampleRate, 48'000);
        EXPECT_TRUE(file.numbers == expected) << ::testing::PrintToString(layout);
    }
}

TEST_F(CaptureTest, KeepsTheAccount)
{
    const auto capture = started({}, m_path);
    m_source->deliver(1'000, 0.25F);
    m_source->skip(480);
    m_source->deliver(1'000, -0.5F);
    const CaptureStats running = capture->stats();
    EXPECT_EQ(running.writeErrors, 0);
    EXPECT_EQ(running.fileFrames, std::nullopt);
    const CaptureStats stopped = capture->stop();
    m_source->deliver(1'000, 1);
    EXPECT_EQ(capture->stop(), stopped);
    EXPECT_EQ(stopped,
        (CaptureStats{.sampleRate = 48'000,
            .channels = 2,
            .frames = 2'000,
            .discontinuities = 1,
            .lostFrames = 480,
            .audioSpan = 1'000 / 48'000.0,
            .hostSpan = stopped.hostSpan,
            .peak = 0.5F,
            .writeErrors = 0,
            .fileFrames = 2'000,
            .clockChecked = true,
            .steadyTone = false,
            .droppedCallbacks = 0}));
    EXPECT_NEAR(stopped.hostSpan, 1'480 / 48'000.0, 1e-6);
}

TEST_F(CaptureTest, StartsOnceAndSaysWhyItCannot)
{
    auto capture = open().value();
    m_source->startStatus = EIO;
    const auto failed = capture->start();
    ASSERT_FALSE(failed);
    EXPECT_EQ(errorText(failed.error()), u"cannot start Mixer: 5"_s);
    EXPECT_TRUE(capture->start());
    m_source->startStatus = EIO;
    EXPECT_TRUE(capture->start()) << "it runs already, so nobody is asked";
    capture.reset();
    EXPECT_FALSE(m_source->isOpen());
}

TEST_F(CaptureTest, TellsOfANewRateOnceAndOfALostDevice)
{
    const auto capture = open().value();
    int rates = 0;
    int losses = 0;
    capture->setOnRateChanged([&] { ++rates; });
    capture->setOnDeviceLost([&] { ++losses; });
    ASSERT_TRUE(capture->start());
    m_source->setRate(48'000);
    EXPECT_FALSE(capture->rateChanged());
    for (const double rate : {44'100, 48'000, 96'000}) {
        m_source->setRate(rate);
        EXPECT_TRUE(capture->rateChanged());
    }
    EXPECT_EQ(rates, 1);
    EXPECT_EQ(losses, 0);
    m_audio.remove(u"mixer"_s);
    EXPECT_GE(losses, 1);
    const CaptureStats stats = capture->stop();
    EXPECT_TRUE(stats.sampleRateChanged && stats.deviceLost);
    EXPECT_EQ(stats.sampleRate, 48'000);
}

TEST_F(CaptureTest, SeesWhatHappenedBetweenOpeningAndStarting)
{
    const auto changed = open().value();
    m_source->setRate(44'100);
    ASSERT_TRUE(changed->start());
    EXPECT_TRUE(changed->rateChanged());

    const auto lost = open().value();
    m_audio.remove(u"mixer"_s);
    m_source->setRate(0);
    ASSERT_TRUE(lost->start());
    EXPECT_TRUE(lost->deviceLost());
    EXPECT_FALSE(lost->rateChanged()) << "what a dying source says of its rate means nothing";
}

TEST_F(CaptureTest, AMeterKeepsPeaksAndNoFigureOfAFile)
{
    const auto mono = started({{2}});
    const auto stereo = started({{1, 4}});
    m_source->deliver({{0.25F, -0.5F}, {-0.125F, 0}, {1, 1}, {0.75F, 0}});
    EXPECT_EQ(mono->takeChannelPeaks(), std::pair(0.125F, 0.125F));
    EXPECT_EQ(stereo->takeChannelPeaks(), std::pair(0.5F, 0.75F));
    EXPECT_EQ(stereo->takeChannelPeaks(), std::pair(0.0F, 0.0F));
    for (const CaptureStats& stats : {stereo->stats(), stereo->stop()}) {
        EXPECT_FALSE(stats.writeErrors || stats.fileFrames);
    }
}

TEST_F(CaptureTest, DiscardsOnlyATakeThatNeverBegan)
{
    started({}, m_path)->discard();
    EXPECT_FALSE(QFileInfo::exists(m_path));
    const auto capture = started({}, m_path);
    m_source->deliver(100, 0.5F);
    capture->discard();
    EXPECT_EQ(SoundFile::read(m_path).frames, 100);
}

TEST_F(CaptureTest, IsReadWhileTheAudioRuns)
{
    const auto capture = started({}, m_path);
    std::jthread audio([this](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            m_source->deliver(256, 0.5F);
            std::this_thread::yield();
        }
    });
    std::int64_t frames = 0;
    bool heard = false;
    EXPECT_TRUE(waitFor([&] {
        const CaptureStats stats = capture->stats();
        EXPECT_GE(stats.frames, frames);
        frames = stats.frames;
        heard = heard || (capture->takeBlockPeak() == 0.5F && capture->takeChannelPeaks().first == 0.5F);
        return frames > 20'000 && heard;
    }));
    m_source->setRate(44'100);
    const CaptureStats stats = capture->stop();
    EXPECT_TRUE(stats.sampleRateChanged);
    EXPECT_EQ(stats.fileFrames, stats.frames - stats.overflowFrames);
}

}  // namespace vantiro::test
