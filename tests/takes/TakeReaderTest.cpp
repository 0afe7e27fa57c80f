// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/TakeReader.h"

#include "core/foundation/FileDescriptor.h"
#include "core/takes/PcmPlanes.h"
#include "tests/support/Sandbox.h"
#include "tests/takes/PcmBytes.h"

#include <QDir>
#include <QFile>

#include <sndfile.h>

#include <cerrno>
#include <memory>
#include <thread>

#include <sys/mman.h>
#include <unistd.h>

namespace vantiro::test {

namespace {

    using Sample = PcmLayout::Sample;

    struct Audio {
        TakeReader::Format format;
        std::vector<float> values;  ///< Interleaved.
    };

    /// The frames of a reader from `first` on, at most `frames`.
    std::vector<float> framesOf(TakeReader& reader, std::int64_t first, std::int64_t frames)
    {
        const auto channels = static_cast<std::size_t>(reader.format().channels);
        std::vector<std::vector<float>> planes(channels, std::vector<float>(static_cast<std::size_t>(frames)));
        std::vector<float*> pointers;
        for (std::vector<float>& plane : planes) {
            pointers.push_back(plane.data());
        }
        const auto got = reader.read(first, pointers, frames);
        EXPECT_TRUE(got && *got >= 0 && *got <= frames);
        std::vector<float> values;
        for (std::size_t frame = 0; frame < static_cast<std::size_t>(got.value_or(0)); ++frame) {
            for (const std::vector<float>& plane : planes) {
                values.push_back(plane[frame]);
            }
        }
        return values;
    }

    class TakeReading : public SandboxTest {
    protected:
        QString file(const QByteArray& bytes)
        {
            const QString path = m_sandbox.path(QStringLiteral("take"));
            Sandbox::writeFile(path, bytes);
            return path;
        }

        /// All of a file, asked for more than it has; nothing if it cannot be opened. In memory: there are thousands.
        static std::optional<Audio> audioOf(const QByteArray& bytes)
        {
            const FileDescriptor memory(::memfd_create("take", MFD_CLOEXEC));
            EXPECT_EQ(::write(memory.get(), bytes.constData(), static_cast<std::size_t>(bytes.size())), bytes.size());
            const auto reader = TakeReader::open(QStringLiteral("/proc/self/fd/%1").arg(memory.get()));
            if (!reader) {
                return std::nullopt;
            }
            return Audio{(*reader)->format(), framesOf(**reader, 0, (*reader)->format().frames + 1)};
        }
    };

}  // namespace

TEST_F(TakeReading, GivesEveryKindOfSampleExactly)
{
    for (const Sample sample : {Sample::int16, Sample::int24, Sample::int32, Sample::float32, Sample::float64}) {
        for (const int channels : {1, 2, 5}) {
            // More than one chunk of reading, and an odd number of bytes where that can be.
            PcmLayout layout{.sample = sample, .sampleRate = 96000, .channels = channels, .frames = 11'003};
            SCOPED_TRACE(::testing::Message() << static_cast<int>(sample) << " in " << channels);
            PcmSamples samples = PcmSamples::random(layout, layout.frames);
            const TakeReader::Format format{layout.sampleRate, channels, layout.frames};
            const QByteArray wav = wavFile(layout, samples.bytes);
            const QByteArray extensible = wavFile(layout, samples.bytes, WavKind::extensible);
            const QByteArray caf = cafFile(layout, samples.bytes);
            layout.order = std::endian::big;
            const QByteArray bigCaf = cafFile(layout, PcmSamples::random(layout, layout.frames).bytes);
            for (const QByteArray& bytes : {wav, extensible, caf, bigCaf}) {
                const auto audio = audioOf(bytes);
                ASSERT_TRUE(audio);
                EXPECT_EQ(audio->format, format);
                EXPECT_TRUE(audio->values == samples.values);
            }
        }
    }
}

TEST_F(TakeReading, IsTheSameWithEachKernelAndKeepsInsideItsBytes)
{
    for (const int channels : {1, 2}) {
        const PcmLayout layout{.sample = Sample::int24, .channels = channels};
        for (std::size_t frames = 0; frames < 40; ++frames) {
            const PcmSamples samples = PcmSamples::random(layout, static_cast<std::int64_t>(frames));
            // Memory of exactly this size shows an address sanitizer each byte too many.
            const std::vector<std::byte> bytes(reinterpret_cast<const std::byte*>(samples.bytes.begin()),
                reinterpret_cast<const std::byte*>(samples.bytes.end()));
            for (const auto kernel : {pcmPlanes::Kernel::plain, pcmPlanes::Kernel::shuffle}) {
                if (!pcmPlanes::isAvailable(kernel)) {
                    continue;
                }
                std::vector<std::vector<float>> planes(
                    static_cast<std::size_t>(channels), std::vector<float>(frames + 2, 9.0F));
                std::vector<float*> pointers;
                for (std::vector<float>& plane : planes) {
                    pointers.push_back(plane.data());
                }
                pcmPlanes::fill(layout, bytes, pointers, 1, kernel);
                for (std::size_t channel = 0; channel < planes.size(); ++channel) {
                    EXPECT_EQ(planes[channel].front(), 9.0F);
                    EXPECT_EQ(planes[channel].back(), 9.0F);
                    for (std::size_t frame = 0; frame < frames; ++frame) {
                        ASSERT_EQ(planes[channel][frame + 1], samples.values[frame * planes.size() + channel]);
                    }
                }
            }
        }
    }
}

TEST_F(TakeReading, AgreesWithFilesOfAnotherLibrary)
{
    const QString path = m_sandbox.path(QStringLiteral("other"));
    for (const int format : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_WAV | SF_FORMAT_FLOAT,
             SF_FORMAT_WAVEX | SF_FORMAT_PCM_24, SF_FORMAT_RF64 | SF_FORMAT_PCM_32, SF_FORMAT_RF64 | SF_FORMAT_DOUBLE,
             SF_FORMAT_CAF | SF_FORMAT_PCM_24, SF_FORMAT_CAF | SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE}) {
        SCOPED_TRACE(::testing::Message() << std::hex << format);
        SF_INFO info = {
            .frames = 0, .samplerate = 44100, .channels = 2, .format = format, .sections = 0, .seekable = 0};
        SNDFILE* out = sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info);
        ASSERT_NE(out, nullptr);
        std::vector<float> values = PcmSamples::random({.sample = Sample::int24, .channels = 2}, 500).values;
        sf_set_string(out, SF_STR_TITLE, "an odd title");
        ASSERT_EQ(sf_writef_float(out, values.data(), 500), 500);
        sf_close(out);

        SNDFILE* back = sf_open(QFile::encodeName(path).constData(), SFM_READ, &info);
        ASSERT_EQ(sf_readf_float(back, values.data(), 500), 500);
        sf_close(back);
        const auto reader = TakeReader::open(path);
        ASSERT_TRUE(reader);
        EXPECT_EQ((*reader)->format(), (TakeReader::Format{44100, 2, 500}));
        EXPECT_TRUE(framesOf(**reader, 0, 500) == values);
    }
}

TEST_F(TakeReading, TakesWhatAFileHoldsForSizesThatWereLeftOpen)
{
    const PcmLayout layout{.sample = Sample::int24, .sampleRate = 48000, .channels = 2};
    const PcmSamples samples = PcmSamples::random(layout, 20);
    const auto caf = [&](std::int64_t size, const QByteArray& between = {}) {
        return cafStart(layout) + between + "data" + big(size) + QByteArray(4, '\0') + samples.bytes;
    };
    const auto wav = [&](std::uint32_t size, const QByteArray& before = {}, const char* name = "RIFF") {
        return name + little(std::uint32_t{0}) + "WAVE" + before + wavFormat(layout, WavKind::plain) + "data"
            + little(size) + samples.bytes;
    };
    const auto longSize = [](std::uint64_t size) {
        return wavChunk("ds64", little(std::uint64_t{0}) + little(size) + QByteArray(12, '\0'));
    };
    const QByteArray list = wavChunk("LIST", "INFOISFT\4\0\0\0abcd");
    const QByteArray cafInfo = cafChunk("info", QByteArray(4, '\0'));
    constexpr std::uint32_t openSize = 0xFFFF'FFFF;
    struct Case {
        const char* what;
        QByteArray bytes;
        std::int64_t frames;
    };
    const std::vector<Case> cases{
        {"caf, unknown", caf(-1), 20},
        {"caf, zero", caf(0), 20},
        {"caf, an edit count only", caf(4), 20},
        {"caf, larger than the file", caf(std::int64_t{1} << 62), 20},
        {"caf, the largest number", caf(INT64_MAX), 20},
        {"caf, the end of a frame is missing", caf(-1).chopped(1), 19},
        {"caf, a size of a while ago", caf(4 + 5 * 6), 20},
        {"caf, a chunk behind", caf(4 + 20 * 6) + cafInfo, 20},
        {"caf, no frames and a chunk behind", cafStart(layout) + cafChunk("data", QByteArray(4, '\0')) + cafInfo, 0},
        {"caf, chunks in front", caf(-1, cafInfo + cafChunk("free", QByteArray(5001, 'x'))), 20},
        {"caf, a description over the edge of the first read",
            QByteArray(cafStart(layout)).insert(8, cafChunk("free", QByteArray(4060, '\0')))
                + cafChunk("data", QByteArray(4, '\0') + samples.bytes),
            20},
        {"wav, zero", wav(0), 20},
        {"wav, unknown", wav(openSize), 20},
        {"wav, larger than the file", wav(0x7FFF'F000), 20},
        {"wav, the end of a frame is missing", wav(openSize).chopped(5), 19},
        {"wav, a size of a while ago", wav(6 * 7), 20},
        {"wav, an odd size, its padding and chunks behind",
            wav(19 * 6 + 5).chopped(1) + QByteArray(1, '\0') + wavChunk("id3 ", "odd") + list, 19},
        {"wav, no frames and a chunk behind", wav(0).chopped(samples.bytes.size()) + list, 0},
        {"wav, odd chunks in front", wav(120, wavChunk("junk", QByteArray(4999, 'x')) + list), 20},
        {"rf64", wav(openSize, longSize(120), "RF64") + list, 20},
        {"bw64, a size left open", wav(openSize, longSize(0), "BW64"), 20},
        {"bw64, a size of the largest number", wav(openSize, longSize(UINT64_MAX), "BW64"), 20},
        {"rf64, a size of a while ago where it always stood", wav(60, longSize(120), "RF64"), 20},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        const auto audio = audioOf(each.bytes);
        if (!audio) {
            ADD_FAILURE();
            continue;
        }
        EXPECT_EQ(audio->format.frames, each.frames);
        const auto expected = std::span(samples.values).first(static_cast<std::size_t>(2 * each.frames));
        EXPECT_TRUE(std::ranges::equal(audio->values, expected));
    }
}

TEST_F(TakeReading, StartsAnywhereOnSeveralThreadsAndEndsEarlyWithItsFile)
{
    const PcmLayout layout{.sample = Sample::int24, .sampleRate = 48000, .channels = 2};
    const PcmSamples samples = PcmSamples::random(layout, 20'000);
    const QString path = file(cafFile(layout, samples.bytes));
    const auto reader = TakeReader::open(path);
    ASSERT_TRUE(reader);
    ASSERT_TRUE((*reader)->isParallel());
    const auto expectParts = [&](std::int64_t step) {
        std::vector<float> values;
        for (std::int64_t first = 0; first < 20'000; first += step) {
            const std::vector<float> part = framesOf(**reader, first, step);
            values.insert(values.end(), part.begin(), part.end());
        }
        EXPECT_TRUE(values == samples.values) << step;
    };
    std::jthread other([&] { expectParts(997); });
    expectParts(7001);
    other.join();
    EXPECT_TRUE(framesOf(**reader, 20'000, 1).empty());
    EXPECT_TRUE(framesOf(**reader, INT64_MAX, 1).empty());
    EXPECT_TRUE(framesOf(**reader, -1, 1).empty());

    ASSERT_TRUE(QFile::resize(path, QFile(path).size() - 6000 * 6 - 1));
    EXPECT_EQ(framesOf(**reader, 10'000, 10'000).size(), 2U * 3999U);
}

TEST_F(TakeReading, StaysSaneWhereverAFileIsCutOrFlipped)
{
    PcmLayout layout{.sample = Sample::int24, .sampleRate = 44100, .channels = 3};
    const QByteArray audio = PcmSamples::random(layout, 9).bytes;
    const std::vector<QByteArray> files{
        cafFile(layout, audio),
        wavFile(layout, audio, WavKind::extensible) + wavChunk("LIST", "INFOISFT\4\0\0\0abcd"),
        "RF64" + little(UINT32_MAX) + "WAVE"
            + wavChunk("ds64", little(std::uint64_t{0}) + little(std::uint64_t{81}) + QByteArray(12, '\0'))
            + wavFormat(layout, WavKind::plain) + "data" + little(UINT32_MAX) + audio,
    };
    const auto expectSane = [](const QByteArray& bytes) {
        if (const auto read = audioOf(bytes)) {
            const TakeReader::Format& format = read->format;
            EXPECT_TRUE(format.channels >= 1 && format.channels <= 256);
            EXPECT_TRUE(format.sampleRate >= 1 && format.sampleRate <= 1'000'000);
            EXPECT_TRUE(format.frames >= 0 && format.frames * format.channels * 2 <= bytes.size());
            EXPECT_EQ(read->values.size(), static_cast<std::size_t>(format.frames * format.channels));
        }
    };
    std::mt19937 random(5);
    for (const QByteArray& whole : files) {
        ASSERT_EQ(audioOf(whole)->format.frames, 9);
        for (qsizetype size = 0; size < whole.size(); ++size) {
            expectSane(whole.first(size));
        }
        for (int round = 0; round < 2000 && !HasFailure(); ++round) {
            QByteArray bytes = whole;
            for (auto flips = random() % 3 + 1; flips > 0; --flips) {
                const auto at = static_cast<qsizetype>(random() % static_cast<std::size_t>(bytes.size()));
                bytes[at] = static_cast<char>(bytes[at] ^ 1 << random() % 8);
            }
            expectSane(bytes);
        }
    }
}

TEST_F(TakeReading, LeavesWhatItCannotReadToTheDecodersAndElseSaysSo)
{
    const PcmLayout layout{.sample = Sample::int16, .sampleRate = 44100, .channels = 1};
    QByteArray eightBits = wavFile(layout, QByteArray(10, '\0'));
    eightBits[32] = 1;
    eightBits[34] = 8;
    for (const QByteArray& bytes : {QByteArray(), QByteArray("some text that is no audio"), eightBits,
             QByteArray("RIFF\0\0\0\0WAVE", 12) + QByteArray(70'000, '\0')}) {
        const auto reader = TakeReader::open(file(bytes));
        ASSERT_FALSE(reader);
        EXPECT_EQ(errorText(reader.error()), QStringLiteral("take holds no audio that can be read."));
    }
    EXPECT_FALSE(TakeReader::open(m_sandbox.folder()));

    TakeReader::setDecoder([](const QString& path) -> Result<std::unique_ptr<TakeReader>> {
        return captureFailure(QStringLiteral("asked for ") + QFileInfo(path).fileName());
    });
    EXPECT_EQ(errorText(TakeReader::open(file("text")).error()), QStringLiteral("asked for take"));
    EXPECT_TRUE(TakeReader::open(file(wavFile(layout, QByteArray(10, '\0')))));
    const auto missing = TakeReader::open(m_sandbox.path(QStringLiteral("none.caf")));
    EXPECT_EQ(std::get<SystemError>(missing.error()).number, ENOENT);
    TakeReader::setDecoder(nullptr);
}

}  // namespace vantiro::test
