// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/TakeRecorder.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/capture/SoundFile.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/Sandbox.h"

#include <QFileInfo>

#include <atomic>
#include <cerrno>
#include <future>
#include <thread>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    constexpr std::int64_t audioStart = 4096;

    /// What goes wrong with the disk. The test sets it, the writer's thread looks.
    struct Faults {
        std::atomic<int> write{0};                     ///< Errno of audio writes.
        std::atomic<int> sync{0};                      ///< Errno of syncs.
        std::atomic<bool> stalls{false};               ///< Audio writes do not return.
        std::atomic<bool> isStalled{false};            ///< One is waiting.
        std::int64_t largest = std::int64_t{1} << 40;  ///< File size in bytes that the volume allows.
        std::atomic<std::int64_t> free{std::int64_t{1} << 40};
    };

    class FaultyFile final : public TakeFile {
    public:
        FaultyFile(std::unique_ptr<TakeFile> file, Faults& faults) : m_file(std::move(file)), m_faults(faults) { }

        int writeAt(std::int64_t offset, std::span<const std::byte> bytes) override
        {
            if (offset + static_cast<std::int64_t>(bytes.size()) > audioStart) {
                while (m_faults.stalls) {
                    m_faults.isStalled = true;
                    std::this_thread::sleep_for(1ms);
                }
                if (const int number = m_faults.write) {
                    return number;
                }
            }
            return m_file->writeAt(offset, bytes);
        }
        int syncData() override { return m_faults.sync != 0 ? m_faults.sync.load() : m_file->syncData(); }
        int syncAll() override { return m_faults.sync != 0 ? m_faults.sync.load() : m_file->syncAll(); }
        int reserve(std::int64_t size) override { return m_file->reserve(size); }
        void trimReserve() override { m_file->trimReserve(); }
        std::optional<std::int64_t> freeBytes() override { return m_faults.free; }
        std::optional<std::int64_t> largestFile() override { return m_faults.largest; }

    private:
        std::unique_ptr<TakeFile> m_file;
        Faults& m_faults;
    };

    class FaultyStorage final : public TakeStorage {
    public:
        explicit FaultyStorage(Faults& faults) : m_faults(faults) { }

        std::expected<std::unique_ptr<TakeFile>, int> create(const QString& path) override
        {
            auto file = m_disk.create(path);
            if (file) {
                return std::make_unique<FaultyFile>(std::move(*file), m_faults);
            }
            return file;
        }
        int renameToFree(const QString& from, const QString& to) override { return m_disk.renameToFree(from, to); }
        int remove(const QString& path) override { return m_disk.remove(path); }
        int syncFolderOf(const QString& path) override { return m_disk.syncFolderOf(path); }
        std::optional<std::int64_t> freeBytesAt(const QString&) override { return m_faults.free; }
        std::optional<std::int64_t> readStart(const QString& path, std::span<std::byte> start) override
        {
            return m_disk.readStart(path, start);
        }

    private:
        TakeStorage& m_disk = posixTakeStorage();
        Faults& m_faults;
    };

}  // namespace

/// A whole take on a disk that fails, from a source without audio hardware.
class FaultTest : public SandboxTest {
protected:
    static constexpr std::int64_t block = 480;

    void start()
    {
        auto starting =
            std::async(std::launch::async, [this] { return TakeRecorder::start(m_request, m_platform, m_storage); });
        ASSERT_TRUE(waitFor([&] {
            const auto devices = m_audio.devicesAndTaps();
            m_source = devices.empty() ? nullptr : m_audio.source(devices.front().uid);
            return (m_source && m_source->isRunning()) || starting.wait_for(0s) == std::future_status::ready;
        }));
        if (m_source) {
            play();
        }
        auto started = starting.get();
        ASSERT_TRUE(started) << qPrintable(errorText(started.error()));
        m_recorder = *std::move(started);
    }

    void play(std::int64_t blocks = 1)
    {
        for (; blocks > 0; --blocks) {
            m_source->deliver(block, 0.25F);
            m_played += block;
        }
    }

    /// Plays on until the take wants to end.
    std::optional<TakeEnding> playToTheEnd()
    {
        std::optional<TakeEnding> ending;
        EXPECT_TRUE(waitFor([&] {
            play();
            ending = m_recorder->tick();
            return ending.has_value();
        }));
        return ending;
    }

    /// Closes the take, and expects that its record and its file agree.
    TakeRecorder::Account finish(std::optional<TakeEnding> ending)
    {
        const TakeRecorder::Account account = m_recorder->finish(ending.value_or(TakeEnding::stopped));
        m_recorder.reset();
        const SoundFile file = SoundFile::read(account.state.path);
        EXPECT_EQ(file.frames, account.state.stats->fileFrames);
        EXPECT_TRUE(std::ranges::all_of(file.numbers, [](std::int32_t number) { return number == 1 << 21; }));
        EXPECT_EQ(RecorderStateStore::read(VantiroPaths::lastTakeFile())->toJson(), account.state.toJson());
        EXPECT_FALSE(QFileInfo::exists(VantiroPaths::stateFile()));
        EXPECT_FALSE(RecorderLock::isHeld(VantiroPaths::lockFile()));
        return account;
    }

    Faults m_faults;
    FaultyStorage m_storage{m_faults};
    Platform m_platform{.audio = std::make_unique<FakeAudio>(), .power = nullptr};
    FakeAudio& m_audio = static_cast<FakeAudio&>(*m_platform.audio);
    std::shared_ptr<FakeSource> m_source;
    TakeRecorder::Request m_request{.source = SourceRef::app(u"org.deck"_s),
        .channels = {},
        .format = TakeFormat::caf,
        .output = m_sandbox.path(u"takes/mix.caf"_s),
        .stopRequested = {}};
    std::unique_ptr<TakeRecorder> m_recorder;
    std::int64_t m_played = 0;

    void SetUp() override { m_audio.programs = {{.pid = 7, .bundleID = u"org.deck"_s, .name = u"Deck"_s}}; }
};

TEST_F(FaultTest, AProgramThatIsGoneQuitUnlessAudioWentWithIt)
{
    for (const auto& [serviceLives, ending, word] : {std::tuple{true, TakeEnding::sourceQuit, u"source-quit"_s},
             {false, TakeEnding::deviceLost, u"device-lost"_s}}) {
        SCOPED_TRACE(serviceLives);
        m_audio.available = true;
        m_played = 0;
        start();
        ASSERT_TRUE(m_recorder);
        EXPECT_EQ(m_recorder->state().deviceUID, u"app:org.deck"_s);
        EXPECT_EQ(m_recorder->state().deviceName, u"Deck"_s);
        play(5);
        m_audio.available = serviceLives;
        m_source->disconnect();
        const auto found = m_recorder->tick();
        EXPECT_EQ(found, ending);
        const auto account = finish(found);
        EXPECT_TRUE(account.isWhole());
        EXPECT_EQ(account.state.endedBecause, word);
        EXPECT_EQ(account.state.stats->fileFrames, m_played);
        EXPECT_TRUE(m_audio.devicesAndTaps().empty()) << "the tap is closed";
    }
}

TEST_F(FaultTest, ADiskThatRefusesEndsTheTakeAndTheRecordSaysWhatIsMissing)
{
    struct Row {
        const char* name;
        std::atomic<int> Faults::* fault;
        int number;
        TakeEnding ending;
        std::optional<QString> word;
    };
    for (const Row& row : std::vector<Row>{
             {"write", &Faults::write, EIO, TakeEnding::writeFailed, std::nullopt},
             {"sync", &Faults::sync, EIO, TakeEnding::writeFailed, std::nullopt},
             {"full", &Faults::write, ENOSPC, TakeEnding::diskFull, u"disk-full"_s},
             {"larger than allowed", &Faults::write, EFBIG, TakeEnding::diskFull, u"disk-full"_s},
         }) {
        SCOPED_TRACE(row.name);
        m_played = 0;
        start();
        ASSERT_TRUE(m_recorder);
        play(20);
        // What was written before is on the disk, and stays there.
        ASSERT_TRUE(waitFor([&] {
            EXPECT_EQ(m_recorder->tick(), std::nullopt);
            return SoundFile::read(*m_request.output, false).frames == m_played;
        }));
        const std::int64_t safe = m_played;
        m_faults.*row.fault = row.number;
        const auto ending = playToTheEnd();
        EXPECT_EQ(ending, row.ending);
        const auto account = finish(ending);
        m_faults.*row.fault = 0;
        EXPECT_FALSE(account.isWhole());
        EXPECT_GE(account.state.stats->writeErrors, 1);
        EXPECT_GE(account.state.stats->fileFrames, safe);
        EXPECT_LT(account.state.stats->fileFrames, account.state.stats->frames);
        EXPECT_EQ(account.state.endedBecause, row.word);
    }
}

TEST_F(FaultTest, AFileThatMayGrowNoFurtherIsClosedWhole)
{
    // Some room is kept free for the close.
    m_faults.largest = TakeWriter::Options{}.roomToKeep + audioStart + 6 * 10'000 + 5;
    for (const TakeFormat format : {TakeFormat::caf, TakeFormat::wav}) {
        SCOPED_TRACE(qPrintable(rawValue(format)));
        m_request.format = format;
        m_request.output = m_sandbox.path(u"takes/mix."_s + rawValue(format));
        start();
        ASSERT_TRUE(m_recorder);
        const auto ending = playToTheEnd();
        EXPECT_EQ(ending, TakeEnding::diskFull);
        const auto account = finish(ending);
        EXPECT_TRUE(account.isWhole());
        EXPECT_EQ(account.state.stats->writeErrors, 0);
        EXPECT_EQ(account.state.stats->fileFrames, 10'000);
    }
}

TEST_F(FaultTest, ADiskThatStallsCostsNothingForAsLongAsTheRingHolds)
{
    start();
    ASSERT_TRUE(m_recorder);
    m_faults.stalls = true;
    ASSERT_TRUE(waitFor([&] {
        play();
        return m_faults.isStalled.load();
    }));
    // Ten seconds of audio, at once.
    play(10 * 48'000 / block);
    EXPECT_EQ(m_recorder->tick(), std::nullopt);
    m_faults.stalls = false;
    const auto account = finish(TakeEnding::stopped);
    EXPECT_TRUE(account.isWhole());
    EXPECT_EQ(account.state.stats->overflowFrames, 0);
    EXPECT_EQ(account.state.stats->fileFrames, m_played);
}

TEST_F(FaultTest, WhatTheRingCannotHoldIsCountedAndNothingElseIsLost)
{
    start();
    ASSERT_TRUE(m_recorder);
    m_faults.stalls = true;
    ASSERT_TRUE(waitFor([&] {
        play();
        return m_faults.isStalled.load();
    }));
    // Far more than a ring of any sensible size.
    for (int rounds = 0; rounds < 200 && m_recorder->source().capture().stats().overflowFrames == 0; ++rounds) {
        play(10 * 48'000 / block);
    }
    m_faults.stalls = false;
    const auto account = finish(TakeEnding::stopped);
    const CaptureStats& stats = *account.state.stats;
    EXPECT_GT(stats.overflowFrames, 0);
    EXPECT_EQ(stats.frames, m_played);
    EXPECT_EQ(*stats.fileFrames + stats.overflowFrames, stats.frames);
    EXPECT_EQ(stats.discontinuities, 0);
}

}  // namespace vantiro::test
