// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeWriter.h"

#include "core/capture/TakeHeader.h"
#include "tests/capture/SoundFile.h"
#include "tests/support/Sandbox.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>

#include <sys/stat.h>

namespace vantiro::test {

namespace {

    using namespace std::chrono_literals;

    constexpr std::int64_t many = std::int64_t{1} << 40;

    /// What goes wrong, and when. The test sets it, the writer's thread looks.
    struct Faults {
        std::atomic<int> write{0};    ///< Errno of audio writes.
        std::atomic<int> header{0};   ///< Errno of writes before the audio.
        std::atomic<int> sync{0};     ///< Errno of syncs of the file.
        std::atomic<int> reserve{0};  ///< Errno of reservations.
        std::atomic<std::int64_t> free{many};
        std::int64_t largest = many;
        std::atomic<bool> gateIsShut{false};
        std::atomic<bool> isAtGate{false};
        std::atomic<int> audioWrites{0};
        std::atomic<int> syncs{0};
    };

    /// A real file behind the faults. It checks that the header never tells what was not synced before.
    class FaultyFile final : public TakeFile {
    public:
        FaultyFile(std::unique_ptr<TakeFile> file, Faults& faults) : m_file(std::move(file)), m_faults(faults) { }

        int writeAt(std::int64_t offset, std::span<const std::byte> bytes) override
        {
            const auto end = offset + static_cast<std::int64_t>(bytes.size());
            const bool isAudio = end > 4096;
            if (isAudio) {
                m_faults.isAtGate = true;
                while (m_faults.gateIsShut) {
                    std::this_thread::sleep_for(1ms);
                }
                ++m_faults.audioWrites;
            } else {
                std::memcpy(m_header.data() + offset, bytes.data(), bytes.size());
                const auto header = TakeHeader::parse(m_header);
                EXPECT_TRUE(header && 4096 + header->frames() * header->shape().frameBytes() <= m_synced);
            }
            if (const int number = isAudio ? m_faults.write : m_faults.header) {
                return number;
            }
            m_end = std::max(m_end, end);
            return m_file->writeAt(offset, bytes);
        }
        int syncData() override
        {
            ++m_faults.syncs;
            m_synced = m_faults.sync == 0 ? m_end : m_synced;
            return m_faults.sync;
        }
        int syncAll() override { return syncData(); }
        int reserve(std::int64_t size) override
        {
            const int number = m_faults.reserve;
            return number != 0 ? number : m_file->reserve(size);
        }
        void trimReserve() override { m_file->trimReserve(); }
        std::optional<std::int64_t> freeBytes() override { return m_faults.free; }
        std::optional<std::int64_t> largestFile() override { return m_faults.largest; }

    private:
        std::unique_ptr<TakeFile> m_file;
        Faults& m_faults;
        std::array<std::byte, 4096> m_header{};
        std::int64_t m_end = 0;
        std::int64_t m_synced = 4096;
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
        int syncFolderOf(const QString&) override { return 0; }
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

class TakeWriting : public SandboxTest {
protected:
    using Offer = FrameSink::Offer;

    void start(TakeStorage& disk)
    {
        auto made = TakeWriter::create(m_options, disk);
        ASSERT_TRUE(made) << qPrintable(errorText(made.error()));
        m_writer = std::move(*made);
    }

    /// Offers the next frames of the noise.
    Offer offer(std::int64_t frames)
    {
        const auto channels = static_cast<std::size_t>(m_options.channels);
        std::vector<float> samples(static_cast<std::size_t>(frames) * channels);
        for (std::size_t index = 0; index < samples.size(); ++index) {
            samples[index] = static_cast<float>(m_numbers[m_taken * channels + index] / 8388608.0);
        }
        const Offer result = m_writer->offer(samples.data(), frames);
        m_taken += static_cast<std::size_t>(result.taken);
        return result;
    }

    [[nodiscard]] bool waitForWritten()
    {
        return waitFor([this] { return m_writer->writtenFrames() == static_cast<std::int64_t>(m_taken); });
    }

    /// The closed file holds exactly the first frames of the noise, as many as close() says; returns how many.
    std::int64_t closeAndCompare()
    {
        const std::optional<std::int64_t> frames = m_writer->close();
        EXPECT_EQ(m_writer->close(), frames);
        const SoundFile file = SoundFile::read(m_options.path);
        EXPECT_EQ(file.frames, frames);
        EXPECT_TRUE(std::ranges::equal(file.numbers, std::span(m_numbers).first(file.numbers.size())));
        return frames.value_or(-1);
    }

    std::int64_t takenFrames() const { return static_cast<std::int64_t>(m_taken); }

    TakeWriter::Options m_options{.path = m_sandbox.path(QStringLiteral("mix.caf")),
        .format = TakeFormat::caf,
        .sampleRate = 48000,
        .channels = 2,
        .appendEvery = 2ms,
        .syncEvery = 10ms,
        .roomEvery = 10ms};
    Faults m_faults;
    FaultyStorage m_storage{m_faults};
    std::vector<int> m_numbers = noise(1'000'000);
    std::size_t m_taken = 0;
    std::unique_ptr<TakeWriter> m_writer;
};

TEST_F(TakeWriting, KeepsEverySampleInEveryShape)
{
    for (const auto& [format, channels, frames] : {std::tuple{TakeFormat::caf, 2, 300'001},
             {TakeFormat::caf, 1, 77'777}, {TakeFormat::wav, 1, 77'777}, {TakeFormat::wav, 3, 40'000}}) {
        SCOPED_TRACE(channels);
        m_options.path = m_sandbox.path(QStringLiteral("%1.%2").arg(channels).arg(rawValue(format)));
        m_options.format = format;
        m_options.channels = channels;
        // Smaller than the take, and no multiple of the blocks: it goes round several times.
        m_options.ring = 777ms;
        m_taken = 0;
        start(posixTakeStorage());
        while (takenFrames() < frames) {
            if (offer(std::min<std::int64_t>(1021, frames - takenFrames())).status == Offer::full) {
                std::this_thread::yield();
            }
        }
        EXPECT_EQ(closeAndCompare(), frames);
        EXPECT_EQ(m_writer->writeErrors(), 0);
        EXPECT_EQ(m_writer->ending(), std::nullopt);
        struct stat status = {};
        ASSERT_EQ(::stat(QFile::encodeName(m_options.path).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0600U);
        EXPECT_LE(status.st_blocks * 512, status.st_size + 65536) << "the reserve was not given back";
        EXPECT_EQ(status.st_size % 2, format == TakeFormat::wav ? 0 : status.st_size % 2);
    }
}

TEST_F(TakeWriting, LosesNothingWhileTheDiskStallsAndRefusesOnlyWholeBlocks)
{
    m_options.ring = 8s;
    start(m_storage);
    m_faults.gateIsShut = true;
    offer(4000);
    ASSERT_TRUE(waitFor([this] { return m_faults.isAtGate.load(); }));
    // The frames at the gate still stand in the ring.
    while (offer(4000).status == Offer::accepted) {
    }
    EXPECT_EQ(m_taken, 384'000U);
    EXPECT_EQ(offer(1), (Offer{Offer::full, 0}));
    m_faults.gateIsShut = false;
    ASSERT_TRUE(waitForWritten());
    EXPECT_EQ(offer(4000), (Offer{Offer::accepted, 4000}));
    EXPECT_EQ(closeAndCompare(), 388'000);
    EXPECT_EQ(m_writer->writeErrors(), 0);
    EXPECT_EQ(m_writer->ending(), std::nullopt);
}

TEST_F(TakeWriting, EndsAtTheVeryLastFrameThatFits)
{
    for (const bool isWav : {true, false}) {
        m_options.format = isWav ? TakeFormat::wav : TakeFormat::caf;
        m_options.path = m_sandbox.path(rawValue(m_options.format));
        m_options.wavAudioBytes = 1000 * 6 + 5;
        m_options.roomToKeep = 4000;
        m_faults.largest = isWav ? many : 4096 + 4000 + 1000 * 6 + 5;
        m_taken = 0;
        start(m_storage);
        EXPECT_EQ(offer(700), (Offer{Offer::accepted, 700}));
        EXPECT_EQ(m_writer->ending(), std::nullopt);
        EXPECT_EQ(offer(700), (Offer{Offer::ended, 300}));
        EXPECT_EQ(m_writer->ending(), isWav ? WriterEnding::wavLimit : WriterEnding::diskFull);
        EXPECT_EQ(offer(1), (Offer{Offer::ended, 0}));
        EXPECT_EQ(closeAndCompare(), 1000);
        EXPECT_EQ(m_writer->writeErrors(), 0);
    }
}

TEST_F(TakeWriting, EndsWholeWhenTheVolumeFillsUp)
{
    const std::array<std::function<void()>, 3> causes{
        [this] { m_faults.free = (64 << 20) - 1; },
        [this] { m_faults.reserve = EDQUOT; },
        [this] { m_faults.write = ENOSPC; },
    };
    for (std::size_t index = 0; index < causes.size(); ++index) {
        SCOPED_TRACE(index);
        m_options.path = m_sandbox.path(QStringLiteral("%1.caf").arg(index));
        m_options.reserveAhead = index == 1 ? 100ms : 60s;
        m_taken = 0;
        start(m_storage);
        offer(30'000);
        ASSERT_TRUE(waitForWritten());
        causes[index]();
        offer(30'000);
        ASSERT_TRUE(waitFor([this] { return m_writer->ending().has_value(); }));
        EXPECT_EQ(m_writer->ending(), WriterEnding::diskFull);
        EXPECT_EQ(offer(100), (Offer{Offer::ended, 0}));
        // What did not fit at first is tried again, and is no failure if it then does.
        m_faults.write = 0;
        EXPECT_EQ(closeAndCompare(), takenFrames());
        EXPECT_EQ(m_writer->writeErrors(), 0);
        m_faults.free = many;
        m_faults.reserve = 0;
    }
}

TEST_F(TakeWriting, CountsAFailedWriteAndKeepsWhatCameBefore)
{
    struct Case {
        int number;
        WriterEnding ending;
    };
    for (const Case& item : {Case{EIO, WriterEnding::writeFailed}, Case{ENOSPC, WriterEnding::diskFull},
             Case{EFBIG, WriterEnding::diskFull}}) {
        SCOPED_TRACE(item.number);
        m_options.path = m_sandbox.path(QStringLiteral("%1.caf").arg(item.number));
        m_taken = 0;
        start(m_storage);
        offer(3000);
        ASSERT_TRUE(waitForWritten());
        m_faults.write = item.number;
        offer(2000);
        ASSERT_TRUE(waitFor([this] { return m_writer->ending().has_value(); }));
        EXPECT_EQ(m_writer->ending(), item.ending);
        EXPECT_EQ(closeAndCompare(), 3000);
        EXPECT_EQ(m_writer->writeErrors(), 1);
        m_faults.write = 0;
    }
}

TEST_F(TakeWriting, NeverRepeatsAFailedSync)
{
    start(m_storage);
    offer(3000);
    ASSERT_TRUE(waitFor([this] { return SoundFile::read(m_options.path, false).frames == 3000; }));
    m_faults.sync = EIO;
    offer(2000);
    ASSERT_TRUE(waitFor([this] { return m_writer->ending().has_value(); }));
    EXPECT_EQ(m_writer->ending(), WriterEnding::writeFailed);
    const int syncs = m_faults.syncs;
    m_faults.sync = 0;
    EXPECT_EQ(closeAndCompare(), 3000);
    EXPECT_EQ(m_faults.syncs, syncs);
    EXPECT_EQ(m_writer->writeErrors(), 1);
}

TEST_F(TakeWriting, MovesAnOlderFileAsideAndFollowsNoLink)
{
    const auto name = [this](const char* suffix) {
        return m_sandbox.path(QStringLiteral("a.mix") + QLatin1StringView(suffix));
    };
    Sandbox::writeFile(name(".caf"), "old");
    Sandbox::writeFile(name("_2.caf"), "older");
    m_options.path = name(".caf");
    start(posixTakeStorage());
    offer(10);
    EXPECT_EQ(closeAndCompare(), 10);
    EXPECT_EQ(Sandbox::readFile(name("_3.caf")), "old");
    EXPECT_EQ(Sandbox::readFile(name("_2.caf")), "older");

    ASSERT_TRUE(QFile::link(name("_2.caf"), name("_link.caf")));
    m_options.path = name("_link.caf");
    const auto refused = TakeWriter::create(m_options, posixTakeStorage());
    ASSERT_FALSE(refused);
    EXPECT_EQ(errorText(refused.error()), QStringLiteral("cannot create %1: %2").arg(m_options.path).arg(EEXIST));
    EXPECT_EQ(Sandbox::readFile(name("_2.caf")), "older");
}

TEST_F(TakeWriting, LeavesNothingBehindWhereItCannotBegin)
{
    const QString noRoom =
        QStringLiteral("There is no room for a take in %1. Free some space, or choose another folder.")
            .arg(m_sandbox.folder());
    const QString cannot = QStringLiteral("cannot create %1: %2").arg(m_options.path).arg(EIO);
    const std::vector<std::pair<std::function<void()>, QString>> cases{
        {[this] { m_faults.free = (64 << 20) - 1; }, noRoom},
        {[this] { m_faults.header = ENOSPC; }, noRoom},
        {[this] { m_faults.reserve = EDQUOT; }, noRoom},
        {[this] { m_faults.header = EIO; }, cannot},
        {[this] { m_faults.sync = EIO; }, cannot},
    };
    for (const auto& [cause, sentence] : cases) {
        cause();
        const auto refused = TakeWriter::create(m_options, m_storage);
        ASSERT_FALSE(refused);
        EXPECT_EQ(errorText(refused.error()), sentence);
        EXPECT_FALSE(QFile::exists(m_options.path));
        m_faults.free = many;
        m_faults.header = m_faults.reserve = m_faults.sync = 0;
    }
    for (const int frames : {0, 1}) {
        start(m_storage);
        if (frames > 0) {
            offer(frames);
        }
        m_writer->discard();
        EXPECT_EQ(QFile::exists(m_options.path), frames > 0);
    }
}

}  // namespace vantiro::test
