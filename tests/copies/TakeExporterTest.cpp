// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/TakeExporter.h"

#include "core/capture/TakeHeader.h"
#include "core/copies/CopyMedia.h"
#include "core/copies/CopyWords.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/support/Sandbox.h"
#include "tests/takes/PcmBytes.h"

#include <QDir>
#include <QFile>

#include <sndfile.h>

#include <cerrno>
#include <memory>

#include <unistd.h>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;

    using Sample = PcmLayout::Sample;
    using Stage = CopyFailure::Stage;

    constexpr std::int64_t manyFrames = 70'001;  // More than two chunks, and odd.

    /// What the encoder for FLAC does in the test that runs.
    using Work = std::function<Result<void>(TakeReader&, const QString& file, const CopyEncoder::Cancelled&)>;

    Work& flacWork()
    {
        static Work work;
        return work;
    }

    class FakeEncoder final : public CopyEncoder {
    public:
        Result<void> encode(
            TakeReader& reader, const QString& file, const Progress&, const Cancelled& cancelled) override
        {
            return flacWork()(reader, file, cancelled);
        }
    };

    Result<std::unique_ptr<CopyEncoder>> openFake(const CopyEncoder::Plan& plan)
    {
        if (plan.format != ExportFormat::flac) {
            return CopyWords::cannotConvert(plan.format);
        }
        return std::make_unique<FakeEncoder>();
    }

    /// Writes a file, as long as the work goes on.
    Result<void> writeSome(TakeReader&, const QString& file, const CopyEncoder::Cancelled& cancelled)
    {
        Sandbox::writeFile(file, "new");
        return cancelled() ? Result<void>(CopyWords::cancelled()) : Result<void>();
    }

    class TakeExporting : public SandboxTest {
    protected:
        TakeExporting()
        {
            CopyMedia::use({.openEncoder = openFake});
            flacWork() = writeSome;
            m_surroundings.volume = [](const QString&) { return CopyRoom::Volume(); };
        }
        void TearDown() override { CopyMedia::use({}); }

        /// A take with random samples.
        PcmSamples writeTake(PcmLayout layout, std::int64_t frames)
        {
            PcmSamples samples = PcmSamples::random(layout, frames);
            Sandbox::writeFile(m_take, cafFile(layout, samples.bytes));
            return samples;
        }

        CopyOutcome exportTo(const QString& destination, ExportFormat format)
        {
            return TakeExporter::exportTake({m_take, destination, format, {}, m_progress, m_cancelled}, m_surroundings);
        }

        /// Nothing is left of a copy: not in the folder, not in the journal.
        void expectNothingLeft() const
        {
            EXPECT_EQ(QDir(m_folder).entryList({u".vantiro-*"_s}, QDir::AllEntries | QDir::Hidden), QStringList());
            EXPECT_FALSE(Sandbox::readFile(VantiroPaths::exportsFile()).contains(".vantiro-export-"));
        }

        QString m_folder = m_sandbox.path(u"takes"_s);
        QString m_take = m_folder + u"/Set.caf"_s;
        QString m_copy = m_folder + u"/Copy"_s;
        CopyEncoder::Progress m_progress;
        CopyEncoder::Cancelled m_cancelled;
        CopyRoom::Surroundings m_surroundings;
    };

}  // namespace

TEST_F(TakeExporting, MakesWavFilesThatOthersReadWithEverySampleAsItWas)
{
    for (const PcmLayout& layout : {
             PcmLayout{Sample::int24, std::endian::little, 44'100, 1},
             PcmLayout{Sample::int24, std::endian::little, 48'000, 2},
             PcmLayout{Sample::int24, std::endian::big, 96'000, 3},
             PcmLayout{Sample::int16, std::endian::big, 48'000, 2},
         }) {
        for (const std::int64_t frames : {std::int64_t{0}, manyFrames}) {
            const PcmSamples samples = writeTake(layout, frames);
            std::vector<double> told;
            m_progress = [&](double fraction) { told.push_back(fraction); };
            ASSERT_TRUE(exportTo(m_copy, ExportFormat::wav));
            SF_INFO info{};
            SNDFILE* const file = sf_open(QFile::encodeName(m_copy).constData(), SFM_READ, &info);
            ASSERT_NE(file, nullptr);
            std::vector<float> values(samples.values.size() + 1);
            EXPECT_EQ(sf_read_float(file, values.data(), static_cast<sf_count_t>(samples.values.size())),
                static_cast<sf_count_t>(samples.values.size()));
            sf_close(file);
            values.pop_back();
            EXPECT_EQ(values, samples.values);
            EXPECT_EQ(info.frames, frames);
            EXPECT_EQ(info.channels, layout.channels);
            EXPECT_EQ(info.samplerate, static_cast<int>(layout.sampleRate));
            EXPECT_EQ(info.format & SF_FORMAT_SUBMASK, SF_FORMAT_PCM_24);
            EXPECT_EQ(told.empty(), frames == 0);
            EXPECT_TRUE(std::ranges::is_sorted(told) && (told.empty() || told.back() == 1));
            EXPECT_EQ(QFileInfo(m_copy).size() % 2, 0);
        }
    }
    expectNothingLeft();
}

TEST_F(TakeExporting, NeverOverwritesTheTakeByWhateverPath)
{
    writeTake({Sample::int24, std::endian::little, 48'000, 2}, 10);
    const QByteArray before = Sandbox::readFile(m_take);
    ASSERT_TRUE(QFile::link(m_take, m_folder + u"/link.wav"_s));
    ASSERT_TRUE(QFile::link(m_folder, m_sandbox.path(u"folder"_s)));
    ASSERT_EQ(::link(QFile::encodeName(m_take), QFile::encodeName(m_folder + u"/second.wav"_s)), 0);
    for (const QString& destination : {m_take, m_folder + u"/../takes//Set.caf"_s, m_folder + u"/link.wav"_s,
             m_sandbox.path(u"folder/Set.caf"_s), m_folder + u"/second.wav"_s}) {
        const auto copied = exportTo(destination, ExportFormat::wav);
        ASSERT_FALSE(copied) << qPrintable(destination);
        EXPECT_EQ(errorText(copied.error().error),
            u"the export would overwrite the take itself. Choose another name or folder."_s);
    }
    EXPECT_EQ(Sandbox::readFile(m_take), before);
}

TEST_F(TakeExporting, LeavesATakeAloneThatIsBeingRecorded)
{
    writeTake({Sample::int24, std::endian::little, 48'000, 2}, 10);
    Sandbox::writeFile(m_copy, "older");
    ASSERT_TRUE(QFile::link(m_copy, m_folder + u"/link"_s));
    const auto lock = RecorderLock::acquire(VantiroPaths::lockFile());
    RecorderState running;
    running.pid = ::getpid();
    running.startedAt = QDateTime::currentDateTimeUtc();
    for (const auto& [path, destination] : {std::pair{m_take, m_copy}, std::pair{m_copy, m_folder + u"/link"_s}}) {
        running.path = path;
        ASSERT_TRUE(RecorderStateStore::write(RecorderState::started(running), VantiroPaths::stateFile()));
        const auto copied = exportTo(destination, ExportFormat::flac);
        ASSERT_FALSE(copied);
        EXPECT_EQ(copied.error().stage, Stage::refused);
        EXPECT_EQ(errorText(copied.error().error),
            u"%1 is still being recorded."_s.arg(QFileInfo(path == m_take ? m_take : destination).fileName()));
    }
    EXPECT_EQ(Sandbox::readFile(m_copy), "older");
}

TEST_F(TakeExporting, ReplacesAnOlderFileOnlyByAWholeCopy)
{
    enum class Trouble {
        none,
        noAudio,
        noEncoder,
        noRoom,
        roomTaken,
        writeFails,
        nothingWritten,
        cancelled,
        cancelledLate,
        takeCut,
    };
    struct Case {
        Trouble trouble;
        ExportFormat format;
        Stage stage;
        QString words;
    };
    const QString noRoom =
        u"there is no room for a copy in %1. Free some space, or choose another folder."_s.arg(m_folder);
    const PcmLayout packed{Sample::int24, std::endian::little, 48'000, 2};
    const PcmLayout swapped{Sample::int24, std::endian::big, 48'000, 2};
    for (const Case& one : {
             Case{Trouble::none, ExportFormat::flac, {}, {}},
             Case{Trouble::noAudio, ExportFormat::flac, Stage::refused, u"cannot open Set.caf"_s},
             Case{Trouble::noEncoder, ExportFormat::alac, Stage::refused,
                 u"cannot convert to Apple Lossless on this Mac"_s},
             Case{Trouble::noRoom, ExportFormat::flac, Stage::refused, noRoom},
             Case{Trouble::roomTaken, ExportFormat::flac, Stage::failed, noRoom},
             Case{Trouble::roomTaken, ExportFormat::wav, Stage::failed, noRoom},
             Case{Trouble::writeFails, ExportFormat::flac, Stage::failed, u"write error: 28"_s},
             Case{Trouble::nothingWritten, ExportFormat::flac, Stage::failed, u"cannot finish Copy: 2"_s},
             Case{Trouble::cancelled, ExportFormat::wav, Stage::cancelled, u"The copy was stopped."_s},
             Case{Trouble::cancelledLate, ExportFormat::flac, Stage::cancelled, u"The copy was stopped."_s},
             Case{Trouble::takeCut, ExportFormat::wav, Stage::failed, u"read error in Set.caf"_s},
         }) {
        const auto is = [&](Trouble trouble) { return one.trouble == trouble; };
        // Samples of another order are not copied all at once.
        writeTake(is(Trouble::takeCut) ? swapped : packed, manyFrames);
        Sandbox::writeFile(m_copy, "older");
        if (is(Trouble::noAudio)) {
            Sandbox::writeFile(m_take, "no audio");
        }
        m_progress = {};
        if (is(Trouble::takeCut)) {
            m_progress = [&](double) { EXPECT_TRUE(QFile::resize(m_take, 300'000)); };
        }
        int asked = 0;
        const int answers = is(Trouble::cancelled) ? 1 : is(Trouble::cancelledLate) ? 2 : 100;
        m_cancelled = [&] { return ++asked >= answers; };
        int looked = 0;
        const int looks = is(Trouble::noRoom) ? 1 : is(Trouble::roomTaken) ? 2 : 100;
        m_surroundings.volume = [&](const QString&) {
            return CopyRoom::Volume{.freeBytes = ++looked < looks ? std::int64_t{1} << 40 : 0};
        };
        std::chrono::steady_clock::time_point now;
        m_surroundings.now = [&] { return now += CopyRoomWatch::interval; };
        flacWork() = writeSome;
        if (is(Trouble::writeFails)) {
            flacWork() = [](TakeReader&, const QString& file, const auto&) -> Result<void> {
                Sandbox::writeFile(file, "half");
                return CopyWords::writeError(ENOSPC);
            };
        } else if (is(Trouble::nothingWritten)) {
            flacWork() = [](TakeReader&, const QString&, const auto&) { return Result<void>(); };
        }

        const auto copied = exportTo(m_copy, one.format);
        EXPECT_EQ(copied ? QString() : errorText(copied.error().error), one.words);
        EXPECT_TRUE(copied || copied.error().stage == one.stage) << qPrintable(one.words);
        EXPECT_EQ(Sandbox::readFile(m_copy), copied ? "new" : "older") << qPrintable(one.words);
        expectNothingLeft();
    }
}

TEST_F(TakeExporting, RefusesATakeThatIsLongerThanWavCanHold)
{
    constexpr std::int64_t frames = 4'000'000'000 / 6;
    m_surroundings.volume = [](const QString&) { return CopyRoom::Volume{.freeBytes = 0}; };
    for (const std::int64_t more : {0, 1}) {
        TakeHeader header({TakeFormat::caf, 48'000, 2});
        header.tell(frames + more, false);
        const auto bytes = header.bytes();
        Sandbox::writeFile(m_take, {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())});
        ASSERT_TRUE(QFile::resize(m_take, static_cast<qint64>(bytes.size()) + (frames + more) * 6));
        const auto tooLong = u"this take is longer than a WAV file can hold. Export it as FLAC or Apple Lossless."_s;
        const auto wav = exportTo(m_copy, ExportFormat::wav);
        EXPECT_EQ(errorText(wav.error().error) == tooLong, more == 1);
        EXPECT_NE(errorText(exportTo(m_copy, ExportFormat::flac).error().error), tooLong);
    }
}

TEST_F(TakeExporting, FailsBeforeTheWorkWhereACopyCannotArrive)
{
    writeTake({Sample::int24, std::endian::little, 48'000, 2}, 10);
    flacWork() = [](TakeReader&, const QString&, const auto&) {
        ADD_FAILURE() << "there was nothing to work for";
        return Result<void>();
    };
    ASSERT_TRUE(QDir().mkpath(m_copy));
    EXPECT_FALSE(exportTo(m_copy, ExportFormat::flac));
    EXPECT_FALSE(exportTo(m_folder + u"/missing/Copy"_s, ExportFormat::flac));
    expectNothingLeft();
}

TEST_F(TakeExporting, WritesTagsInOneStepOrNotAtAll)
{
    TakeTags tags;
    tags.title = u"Mix, 25 Sep 2026, 21:04"_s;
    Sandbox::writeFile(m_copy, "older");
    ASSERT_TRUE(QFile::link(m_copy, m_sandbox.path(u"link.m4a"_s)));
    EXPECT_EQ(errorText(TakeExporter::writeTags(tags, m_copy).error()), u"cannot tag Copy"_s);
    EXPECT_FALSE(TakeExporter::isAAC(m_copy));

    CopyMedia::use({.inspect = [](const QString& path) -> Result<CopyMedia::Facts> {
                        return CopyMedia::Facts{.isAAC = Sandbox::readFile(path) == "older"};
                    },
        .remux = [](const QString& source, const TakeTags& given, const QString& target) -> Result<void> {
            EXPECT_TRUE(QFileInfo(target).fileName().startsWith(u".tagging-"_s));
            EXPECT_TRUE(Sandbox::readFile(VantiroPaths::exportsFile()).contains(target.toUtf8()));
            Sandbox::writeFile(target, Sandbox::readFile(source) + given.title.toUtf8());
            return given.title.isEmpty() ? Result<void>(CopyWords::writeError(ENOSPC)) : Result<void>();
        }});
    EXPECT_TRUE(TakeExporter::isAAC(m_copy));
    EXPECT_FALSE(TakeExporter::isAAC(m_folder));
    EXPECT_FALSE(TakeExporter::writeTags({}, m_copy, m_surroundings));
    EXPECT_FALSE(TakeExporter::writeTags(tags, m_copy, {.volume = [](const QString&) {
        return CopyRoom::Volume{.freeBytes = 0};
    }})) << "a take may need the room";
    EXPECT_EQ(Sandbox::readFile(m_copy), "older");
    EXPECT_TRUE(TakeExporter::writeTags(tags, m_sandbox.path(u"link.m4a"_s), m_surroundings));
    EXPECT_EQ(Sandbox::readFile(m_copy), "older" + tags.title.toUtf8());
    EXPECT_EQ(QDir(m_folder).entryList(QDir::Files | QDir::Hidden), QStringList{u"Copy"_s});
    EXPECT_FALSE(Sandbox::readFile(VantiroPaths::exportsFile()).contains(".tagging-"));
}

}  // namespace vantiro::test
