// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/FfmpegTakeReader.h"

#include "tests/support/Sandbox.h"
#include "tests/takes/PcmBytes.h"

#include <QFile>
#include <QProcess>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <numbers>
#include <span>

namespace vantiro::test {

namespace {

    using namespace Qt::Literals::StringLiterals;

    constexpr int rate = 44100;
    constexpr std::int64_t length = 6 * rate + 123;

    /// A rising tone on the left and half of it on the right, which swells and fades.
    std::vector<std::int16_t> tone()
    {
        std::vector<std::int16_t> samples;
        for (std::int64_t frame = 0; frame < length; ++frame) {
            const double part = static_cast<double>(frame) / length;
            const double value = std::sin(7000 * (1 + part) * part) * std::sin(std::numbers::pi * part);
            samples.push_back(static_cast<std::int16_t>(16000 * value));
            samples.push_back(static_cast<std::int16_t>(8000 * value));
        }
        return samples;
    }

    /// Interleaved.
    std::vector<float> framesOf(TakeReader& reader, std::int64_t first, std::int64_t frames)
    {
        std::vector<float> left(static_cast<std::size_t>(frames));
        std::vector<float> right(left.size());
        const std::array planes{left.data(), right.data()};
        const std::int64_t got = reader.read(first, planes, frames).value_or(-1);
        EXPECT_GE(got, 0);
        std::vector<float> values;
        for (std::size_t frame = 0; static_cast<std::int64_t>(frame) < got; ++frame) {
            values.push_back(left[frame]);
            values.push_back(right[frame]);
        }
        return values;
    }

    class FfmpegReading : public SandboxTest {
    protected:
        FfmpegReading() : m_tone(tone())
        {
            const PcmLayout layout{.sampleRate = rate, .channels = 2};
            QByteArray bytes;
            for (const std::int16_t sample : m_tone) {
                bytes += little(sample);
            }
            Sandbox::writeFile(m_sandbox.path(u"tone.wav"_s), wavFile(layout, bytes));
        }

        /// The tone as another file, or whatever the encoder is told to make of them.
        QString encoded(const QString& name, const QStringList& arguments = {})
        {
            QString path = m_sandbox.path(name);
            const QStringList before{u"-v"_s, u"error"_s, u"-y"_s, u"-i"_s, m_sandbox.path(u"tone.wav"_s)};
            EXPECT_EQ(QProcess::execute(u"ffmpeg"_s, before + arguments + QStringList{path}), 0) << qPrintable(name);
            return path;
        }

        /// How far the worst of these samples is from the tone.
        double distance(const std::vector<float>& values) const
        {
            double worst = 0;
            for (std::size_t index = 0; index < std::min(values.size(), m_tone.size()); ++index) {
                worst = std::max(worst, std::abs(static_cast<double>(values[index]) - m_tone[index] / 32768.0));
            }
            return worst;
        }

        std::vector<std::int16_t> m_tone;
    };

    struct Kind {
        QString name;
        QStringList arguments;
        double tolerance;
        std::int64_t padding;  ///< Frames that an encoder may leave behind the end.
    };

    const std::vector<Kind> kinds{
        {u"a.flac"_s, {}, 0, 0},
        {u"24 bits.flac"_s, {u"-sample_fmt"_s, u"s32"_s}, 0, 0},
        {u"a.m4a"_s, {u"-c:a"_s, u"alac"_s}, 0, 0},
        {u"a.aiff"_s, {}, 0, 0},
        {u"bytes.wav"_s, {u"-c:a"_s, u"pcm_u8"_s}, 0.01, 0},
        {u"lossy.m4a"_s, {u"-c:a"_s, u"aac"_s, u"-b:a"_s, u"192k"_s}, 0.02, 1024},
        {u"a.aac"_s, {u"-b:a"_s, u"192k"_s}, 2, 2048},
        {u"a.mp3"_s, {u"-b:a"_s, u"192k"_s}, 0.02, 0},
        {u"varying.mp3"_s, {u"-q:a"_s, u"2"_s}, 0.02, 0},
        {u"a.ogg"_s, {u"-c:a"_s, u"libvorbis"_s, u"-q:a"_s, u"7"_s}, 0.02, 0},
    };

}  // namespace

TEST_F(FfmpegReading, GivesWhatWasEncodedFromAnyPlaceOn)
{
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(qPrintable(kind.name));
        const QString path = encoded(kind.name, kind.arguments);
        const auto once = FfmpegTakeReader::open(path);
        ASSERT_TRUE(once);
        EXPECT_FALSE((*once)->isParallel());
        const TakeReader::Format& format = (*once)->format();
        EXPECT_EQ(format.sampleRate, rate);
        EXPECT_EQ(format.channels, 2);
        EXPECT_NEAR(static_cast<double>(format.frames), static_cast<double>(length), 2048);
        const std::vector<float> whole = framesOf(**once, 0, length + 10'000);
        EXPECT_GE(whole.size(), 2U * length);
        EXPECT_LE(whole.size(), 2U * (length + kind.padding));
        EXPECT_LE(distance(whole), kind.tolerance);

        const auto often = FfmpegTakeReader::open(path);
        ASSERT_TRUE(often);
        for (const std::int64_t first : {5 * rate + 7, 4 * rate, 4 * rate + 5000, 3 * rate - 1, 10, 0}) {
            const std::span expected = std::span(whole).subspan(static_cast<std::size_t>(2 * first), 18'000);
            EXPECT_TRUE(std::ranges::equal(framesOf(**often, first, 9000), expected)) << first;
        }
        EXPECT_TRUE(framesOf(**often, length + 10'000, 1).empty());
        EXPECT_EQ(framesOf(**often, length - 10, 10).size(), 20U) << "after the end";
    }
}

TEST_F(FfmpegReading, GivesTheBeginningOfAFileThatBreaksOff)
{
    for (const Kind& kind : {kinds[0], kinds[2], kinds[7], kinds[9]}) {
        SCOPED_TRACE(qPrintable(kind.name));
        const QString path = encoded(kind.name, kind.arguments);
        ASSERT_TRUE(QFile::resize(path, QFile(path).size() / 2));
        const auto reader = FfmpegTakeReader::open(path);
        // The description of such a file stands at its end.
        ASSERT_EQ(reader.has_value(), !kind.name.endsWith(u".m4a"_s));
        if (reader) {
            const std::vector<float> values = framesOf(**reader, 0, length);
            EXPECT_GT(values.size(), length / 2U);
            EXPECT_LT(values.size(), 3U * length / 2U);
            EXPECT_LE(distance(values), kind.tolerance);
        }
    }
}

TEST_F(FfmpegReading, SaysWhenThereIsNoAudio)
{
    const QString video = encoded(u"video.mp4"_s,
        {u"-f"_s, u"lavfi"_s, u"-i"_s, u"color=s=64x64:d=0.2"_s, u"-map"_s, u"1:v"_s, u"-c:v"_s, u"mpeg4"_s});
    const QString text = m_sandbox.path(u"text.mp3"_s);
    Sandbox::writeFile(text, QByteArray("This is no audio, whatever its name says. ").repeated(200));
    // Lists of other files are none either.
    const QString list = m_sandbox.path(u"list.m3u8"_s);
    Sandbox::writeFile(list, "#EXTM3U\n#EXT-X-TARGETDURATION:6\n#EXTINF:6,\ntone.wav\n#EXT-X-ENDLIST\n");
    const QString empty = m_sandbox.path(u"empty"_s);
    Sandbox::writeFile(empty, {});
    for (const QString& path : {video, text, list, empty}) {
        const auto reader = FfmpegTakeReader::open(path);
        ASSERT_FALSE(reader) << qPrintable(path);
        EXPECT_EQ(
            errorText(reader.error()), path.mid(path.lastIndexOf(u'/') + 1) + u" holds no audio that can be read."_s);
    }
    const auto missing = FfmpegTakeReader::open(m_sandbox.path(u"none.mp3"_s));
    EXPECT_EQ(std::get<SystemError>(missing.error()).number, ENOENT);
}

}  // namespace vantiro::test
