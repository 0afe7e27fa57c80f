// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/FfmpegEncoder.h"

#include "core/copies/CopyWords.h"
#include "platform/media/FfmpegTakeReader.h"
#include "platform/media/M4aFile.h"
#include "tests/support/Sandbox.h"
#include "tests/takes/PcmBytes.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numbers>

namespace vantiro::test {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using FfmpegEncoder::Cutting;

    // A stretch of the shortest kind, so that a small take has many.
    constexpr Cutting manyStretches{.losslessSeconds = 0.3, .aacSeconds = 1.5, .threads = 3};
    constexpr Cutting oneStretch{.losslessSeconds = 1e6, .aacSeconds = 1e6};

    /// A phrase with tones that glide, hits that begin at once, and silence: encoders change their ways all the time.
    std::vector<float> phrase(int rate, double seconds)
    {
        std::vector<float> samples;
        std::uint32_t noise = 1;
        const auto frames = static_cast<std::int64_t>(seconds * rate);
        for (std::int64_t frame = 0; frame < frames; ++frame) {
            const double time = static_cast<double>(frame) / rate;
            noise = noise * 1664525U + 1013904223U;
            const double hiss = static_cast<double>(noise >> 8U) / 8388608.0 - 1;
            const double sinceHit = std::fmod(time, 0.47);
            const double hit = std::exp(-40 * sinceHit) * hiss;
            const double glide = std::sin(2 * std::numbers::pi * (220 * time + 300 * std::sin(time)));
            const double level = std::fmod(time, 7) < 6 ? 1 : 0;
            samples.push_back(static_cast<float>(level * (0.3 * glide + 0.4 * hit)));
            samples.push_back(static_cast<float>(level * (0.2 * std::sin(3000 * time) + 0.3 * hit)));
        }
        return samples;
    }

    struct Read {
        TakeReader::Format format;
        std::vector<float> samples;  ///< Interleaved.
    };

    Read readAll(TakeReader& reader)
    {
        Read read{.format = reader.format(), .samples = {}};
        constexpr std::int64_t chunk = 4096;
        const auto channels = static_cast<std::size_t>(read.format.channels);
        std::vector<std::vector<float>> storage(channels, std::vector<float>(chunk));
        std::vector<float*> planes;
        for (auto& plane : storage) {
            planes.push_back(plane.data());
        }
        for (std::int64_t first = 0, got = chunk; got > 0; first += got) {
            got = reader.read(first, planes, chunk).value_or(0);
            for (std::size_t frame = 0; static_cast<std::int64_t>(frame) < got; ++frame) {
                for (const float* plane : planes) {
                    read.samples.push_back(plane[frame]);
                }
            }
        }
        return read;
    }

    Read decoded(const QString& path)
    {
        const auto reader = FfmpegTakeReader::open(path);
        EXPECT_TRUE(reader) << qPrintable(path);
        return reader ? readAll(**reader) : Read{};
    }

    QByteArray output(const QString& program, const QStringList& arguments)
    {
        QProcess process;
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished()) << qPrintable(program);
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
        return process.readAllStandardOutput();
    }

    /// A square of one colour.
    QByteArray png()
    {
        return QByteArray::fromHex(
            "89504e470d0a1a0a0000000d4948445200000002000000020802000000fdd49a730000000970485973000000010000"
            "0001004f25c4d60000001049444154789c63f8cbc000440c100a001fae03f5f6182a590000000049454e44ae426082");
    }

    TakeTags tags()
    {
        return {.title = u"Mix, 25 Sep 2026, 21:04"_s,
            .artist = u"DJ Ünal"_s,
            .releaseDate = u"2026-09-25"_s,
            .recorded = QDateTime(QDate(2026, 9, 25), QTime(19, 4), Qt::UTC),
            .artwork = png()};
    }

    class Encoding : public SandboxTest {
    protected:
        /// Writes a take of 24 bits and opens it.
        std::unique_ptr<TakeReader> take(int rate, int channels, const std::vector<float>& samples)
        {
            PcmLayout layout{.sampleRate = static_cast<double>(rate), .channels = channels};
            layout.sample = PcmLayout::Sample::int24;
            QByteArray bytes;
            for (const float sample : samples) {
                bytes += little(static_cast<std::int32_t>(std::lrint(sample * 8388608.0F))).first(3);
            }
            m_packed = bytes;
            Sandbox::writeFile(m_sandbox.path(u"take.caf"_s), cafFile(layout, bytes));
            auto reader = TakeReader::open(m_sandbox.path(u"take.caf"_s));
            EXPECT_TRUE(reader);
            return std::move(*reader);
        }

        QString encode(ExportFormat format, TakeReader& reader, const QString& name, const Cutting& cutting,
            const std::optional<TakeTags>& tags = std::nullopt)
        {
            const QString path = m_sandbox.path(name);
            const auto encoder = FfmpegEncoder::open(
                {format, u"take.caf"_s, reader.format().sampleRate, reader.format().channels, tags}, cutting);
            EXPECT_TRUE(encoder);
            double last = 0;
            const auto made = (*encoder)->encode(
                reader, path,
                [&last](double part) {
                    EXPECT_GE(part, last);
                    EXPECT_LE(part, 1);
                    last = part;
                },
                [] { return false; });
            EXPECT_TRUE(made) << qPrintable(made ? QString() : errorText(made.error()));
            return path;
        }

        QByteArray m_packed;  ///< The samples of the take as they lie in its file.
    };

}  // namespace

TEST_F(Encoding, KeepsEverySampleWithoutLoss)
{
    for (const auto& [rate, channels] : {std::pair{44100, 1}, {48000, 2}, {96000, 2}, {192000, 2}, {44100, 3},
             {48000, 4}, {48000, 5}, {48000, 6}, {48000, 7}, {48000, 8}}) {
        const PcmLayout layout{.sampleRate = static_cast<double>(rate), .channels = channels};
        const auto samples = PcmSamples::random(
            {.sample = PcmLayout::Sample::int24, .sampleRate = layout.sampleRate, .channels = channels}, rate / 2 + 17);
        const auto reader = take(rate, channels, samples.values);
        for (const ExportFormat format : {ExportFormat::flac, ExportFormat::alac}) {
            SCOPED_TRACE(testing::Message() << rawValue(format).toStdString() << rate << channels);
            const Read copy =
                decoded(encode(format, *reader, u"copy."_s + fileExtension(format), {.losslessSeconds = 0.1}));
            EXPECT_EQ(copy.format, reader->format());
            EXPECT_TRUE(copy.samples == samples.values);
        }
    }
}

TEST_F(Encoding, JoinsLosslessStretchesToTheFileThatOneEncoderMakes)
{
    const auto reader = take(44100, 2, phrase(44100, 21.3));
    for (const ExportFormat format : {ExportFormat::flac, ExportFormat::alac}) {
        const QByteArray whole = Sandbox::readFile(encode(format, *reader, u"whole"_s, oneStretch));
        EXPECT_GT(whole.size(), 100'000);
        EXPECT_TRUE(whole == Sandbox::readFile(encode(format, *reader, u"joined"_s, manyStretches)))
            << rawValue(format).toStdString();
    }
    // What the header says is right as well, not only the same.
    SF_INFO info{};
    SNDFILE* file = sf_open(m_sandbox.path(u"joined.flac"_s).toLocal8Bit().constData(), SFM_READ, &info);
    EXPECT_EQ(file, nullptr);
    const QString flac = encode(ExportFormat::flac, *reader, u"joined.flac"_s, manyStretches);
    file = sf_open(flac.toLocal8Bit().constData(), SFM_READ, &info);
    ASSERT_NE(file, nullptr);
    sf_close(file);
    EXPECT_EQ(info.frames, reader->format().frames);
    constexpr qsizetype hashPlace = 4 + 4 + 18;  // Behind the name of the format and the head of the block.
    EXPECT_EQ(Sandbox::readFile(flac).mid(hashPlace, 16), QCryptographicHash::hash(m_packed, QCryptographicHash::Md5));
}

TEST_F(Encoding, LeavesNoTraceOfTheJointsInAac)
{
    const int rate = 44100;
    const std::vector<float> original = phrase(rate, 15);
    const auto reader = take(rate, 2, original);
    const Read whole = decoded(encode(ExportFormat::aac, *reader, u"whole.m4a"_s, oneStretch));
    const Read joined = decoded(encode(ExportFormat::aac, *reader, u"joined.m4a"_s, manyStretches));
    // Decoders may give all of the last packet.
    ASSERT_GE(joined.samples.size(), original.size());
    ASSERT_EQ(joined.samples.size(), whole.samples.size());
    EXPECT_EQ(joined.format, reader->format());

    /// The energy of the error of each packet.
    const auto errors = [&original](const Read& copy) {
        std::vector<double> energies(original.size() / 2048 + 1);
        for (std::size_t index = 0; index < original.size(); ++index) {
            const double error = static_cast<double>(copy.samples[index]) - static_cast<double>(original[index]);
            energies[index / 2048] += error * error;
        }
        return energies;
    };
    const std::vector<double> serial = errors(whole);
    const std::vector<double> apart = errors(joined);
    // Ten stretches of 1.5 s, which meet within 16 packets of where they were cut.
    constexpr std::int64_t cuts = 10;
    double sumSerial = 0;
    double sumJoints = 0;
    const auto packets = static_cast<std::int64_t>(serial.size()) + 1;
    for (std::int64_t cut = 1; cut < cuts; ++cut) {
        const auto first = static_cast<std::size_t>(packets * cut / cuts - 1);
        for (std::size_t packet = first; packet < first + 18; ++packet) {
            sumSerial += serial[packet];
            sumJoints += apart[packet];
        }
    }
    EXPECT_LT(*std::ranges::max_element(apart), *std::ranges::max_element(serial) * 1.1);
    EXPECT_LT(sumJoints, sumSerial * 1.1);
    EXPECT_FALSE(joined.samples == whole.samples) << "nothing was cut";
}

TEST_F(Encoding, MakesOneStretchOfTwoThatCannotMeet)
{
    const auto reader = take(44100, 2, phrase(44100, 4.5));
    Cutting cutting = manyStretches;
    cutting.overlap = -1;
    EXPECT_TRUE(Sandbox::readFile(encode(ExportFormat::aac, *reader, u"whole.m4a"_s, oneStretch))
        == Sandbox::readFile(encode(ExportFormat::aac, *reader, u"joined.m4a"_s, cutting)));
}

TEST_F(Encoding, KeepsTheLengthAndTheOrderOfChannelsInAac)
{
    for (const int channels : {1, 2, 3, 4, 5}) {
        for (const std::int64_t frames : {0, 100, 1024, 48000}) {
            SCOPED_TRACE(testing::Message() << channels << " channels, " << frames << " frames");
            std::vector<float> samples;
            for (std::int64_t frame = 0; frame < frames; ++frame) {
                for (int channel = 0; channel < channels; ++channel) {
                    samples.push_back(
                        static_cast<float>(0.2 * std::sin(0.02 * (channel + 1) * static_cast<double>(frame))));
                }
            }
            const auto reader = take(48000, channels, samples);
            const QString path = encode(ExportFormat::aac, *reader, u"copy.m4a"_s, {});
            if (frames == 0) {
                EXPECT_FALSE(Sandbox::readFile(path).isEmpty());
                continue;
            }
            const Read copy = decoded(path);
            EXPECT_EQ(copy.format, reader->format());
            ASSERT_GE(copy.samples.size(), samples.size());
            if (frames < 48000) {
                continue;
            }
            double error = 0;
            double energy = 0;
            for (std::size_t index = 0; index < samples.size(); ++index) {
                error += std::pow(copy.samples[index] - samples[index], 2);
                energy += std::pow(samples[index], 2);
            }
            EXPECT_LT(error, energy / 20);
        }
    }
}

TEST_F(Encoding, TakesNumbersThatAreNoSoundForSilence)
{
    const PcmLayout layout{.sample = PcmLayout::Sample::float32, .sampleRate = 44100, .channels = 1};
    QByteArray bytes;
    for (int frame = 0; frame < 44100; ++frame) {
        const std::array wild{1e9F, -1e30F, INFINITY, NAN};
        bytes += little(std::bit_cast<std::uint32_t>(wild[static_cast<std::size_t>(frame / 7 % 4)]));
    }
    Sandbox::writeFile(m_sandbox.path(u"wild.wav"_s), wavFile(layout, bytes));
    const auto reader = TakeReader::open(m_sandbox.path(u"wild.wav"_s));
    ASSERT_TRUE(reader);
    const Read copy = decoded(encode(ExportFormat::aac, **reader, u"copy.m4a"_s, {}));
    EXPECT_TRUE(std::ranges::all_of(copy.samples, [](float sample) { return std::abs(sample) < 1e-3F; }));
}

TEST_F(Encoding, RefusesWhatAFormatCannotKeep)
{
    struct Case {
        ExportFormat format;
        double rate;
        int channels;
    };
    for (const Case& refused : {Case{ExportFormat::aac, 192000, 2}, {ExportFormat::aac, 176400, 2},
             {ExportFormat::aac, 48000, 6}, {ExportFormat::aac, 48000, 9}, {ExportFormat::flac, 48000, 9},
             {ExportFormat::alac, 48000, 9}, {ExportFormat::alac, 44100.5, 2}, {ExportFormat::flac, 1e6, 2}}) {
        const auto encoder = FfmpegEncoder::open({refused.format, u"take.caf"_s, refused.rate, refused.channels});
        ASSERT_FALSE(encoder);
        EXPECT_EQ(encoder.error(), CopyWords::cannotConvert(refused.format).error());
    }
}

TEST_F(Encoding, EndsSoonWhenItIsStoppedAndTellsWhatTheDiskDid)
{
    const auto reader = take(44100, 2, phrase(44100, 8));
    for (const ExportFormat format : {ExportFormat::flac, ExportFormat::alac, ExportFormat::aac}) {
        for (const Cutting& cutting : {oneStretch, manyStretches}) {
            const auto open = [&] { return *FfmpegEncoder::open({format, u"take.caf"_s, 44100, 2}, cutting); };
            int asked = 0;
            const auto stopped =
                open()->encode(*reader, m_sandbox.path(u"stopped"_s), {}, [&asked] { return ++asked > 1; });
            ASSERT_FALSE(stopped);
            EXPECT_EQ(stopped.error(), CopyWords::cancelled().error());

            const auto nowhere = open()->encode(*reader, m_sandbox.path(u"no/copy"_s), {}, [] { return false; });
            ASSERT_FALSE(nowhere);
            EXPECT_EQ(nowhere.error(), CopyWords::cannotCreate(u"copy"_s, ENOENT).error());

            const auto full = open()->encode(*reader, u"/dev/full"_s, {}, [] { return false; });
            ASSERT_FALSE(full);
            EXPECT_TRUE(errorText(full.error()).endsWith(QString::number(ENOSPC)))
                << qPrintable(errorText(full.error()));
        }
    }
}

TEST_F(Encoding, WritesTagsAndACoverThatOtherProgramsRead)
{
    const auto reader = take(44100, 2, phrase(44100, 3));
    const QString cover = m_sandbox.path(u"copy_artwork_1.png"_s);
    for (const ExportFormat format : {ExportFormat::alac, ExportFormat::aac}) {
        const QString path = encode(format, *reader, u"copy.m4a"_s, {}, tags());
        const auto track =
            QJsonDocument::fromJson(output(u"mediainfo"_s, {u"--Output=JSON"_s, path})).object()[u"media"][u"track"][0];
        EXPECT_EQ(track[u"Title"].toString(), tags().title);
        EXPECT_EQ(track[u"Performer"].toString(), *tags().artist);
        EXPECT_EQ(track[u"Album"].toString(), u"Vantiro"_s);
        EXPECT_EQ(track[u"Genre"].toString(), u"DJ Mix"_s);
        EXPECT_EQ(track[u"Recorded_Date"].toString(), u"2026-09-25"_s);
        EXPECT_TRUE(track[u"Encoded_Application"].toString().startsWith(u"Vantiro "_s));
        SCOPED_TRACE(
            output(u"AtomicParsley"_s, {path, u"--extractPixToPath"_s, m_sandbox.path(u"copy"_s)}).constData());
        EXPECT_EQ(Sandbox::readFile(cover), png());
        QFile::remove(cover);
    }
}

TEST_F(Encoding, GivesNewTagsToACopyWithoutTouchingItsAudio)
{
    const auto reader = take(44100, 2, phrase(44100, 3));
    TakeTags oldTags = tags();
    oldTags.title = u"old"_s;
    oldTags.artwork.reset();
    for (const ExportFormat format : {ExportFormat::alac, ExportFormat::aac}) {
        const QString path = encode(format, *reader, u"copy.m4a"_s, {}, oldTags);
        const auto packetsOf = [](const QString& file) {
            return output(u"ffmpeg"_s,
                {u"-v"_s, u"error"_s, u"-i"_s, file, u"-map"_s, u"0:a"_s, u"-c"_s, u"copy"_s, u"-f"_s, u"framemd5"_s,
                    u"-"_s});
        };
        const QString tagged = m_sandbox.path(u"tagged.m4a"_s);
        ASSERT_TRUE(M4aFile::remux(path, tags(), tagged));
        EXPECT_EQ(packetsOf(tagged), packetsOf(path));
        EXPECT_TRUE(decoded(tagged).samples == decoded(path).samples);
        EXPECT_EQ(Sandbox::readFile(tagged), Sandbox::readFile(encode(format, *reader, u"new.m4a"_s, {}, tags())));
        const auto facts = M4aFile::inspect(tagged);
        ASSERT_TRUE(facts);
        EXPECT_EQ(facts->isAAC, format == ExportFormat::aac);
        EXPECT_EQ(facts->album, u"Vantiro"_s);
    }
    EXPECT_FALSE(M4aFile::inspect(m_sandbox.path(u"nothing"_s)));
}

}  // namespace vantiro::test
