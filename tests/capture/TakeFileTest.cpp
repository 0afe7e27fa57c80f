// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/AudioRing.h"
#include "core/capture/PackedPcm.h"
#include "core/capture/TakeHeader.h"
#include "core/capture/TakeRepair.h"
#include "core/foundation/FileDescriptor.h"
#include "tests/capture/SoundFile.h"
#include "tests/support/Sandbox.h"

#include <QDateTime>
#include <QFileInfo>

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace vantiro::test {

namespace {

    constexpr double fullScale = 8388608.0;

    /// On the heap: the address sanitizer's own stack frames do not keep the alignment of a cache line.
    std::unique_ptr<AudioRing> makeRing(std::size_t capacity)
    {
        return std::make_unique<AudioRing>(capacity);
    }

    std::int32_t unpacked(const std::byte* bytes)
    {
        const auto at = [&](int index) { return std::to_integer<std::uint32_t>(bytes[index]); };
        return static_cast<std::int32_t>((at(0) | at(1) << 8U | at(2) << 16U) << 8U) >> 8;
    }

    std::int32_t expectedNumber(float sample)
    {
        if (std::isnan(sample)) {
            return 0;
        }
        return static_cast<std::int32_t>(
            std::nearbyint(std::clamp(static_cast<double>(sample) * fullScale, -fullScale, fullScale - 1)));
    }

    void expectPacked(const std::vector<float>& samples)
    {
        // The byte behind the last one belongs to somebody else.
        std::vector<std::byte> bytes(samples.size() * packedPcm::sampleBytes + 1, std::byte{0x5A});
        packedPcm::pack(samples, bytes);
        std::size_t wrong = 0;
        for (std::size_t index = 0; index < samples.size(); ++index) {
            if (unpacked(bytes.data() + index * packedPcm::sampleBytes) != expectedNumber(samples[index])
                && ++wrong < 5) {
                ADD_FAILURE() << static_cast<double>(samples[index]) * fullScale << " at " << index;
            }
        }
        EXPECT_EQ(wrong, 0U);
        EXPECT_EQ(bytes.back(), std::byte{0x5A});
    }

    QByteArray headerOf(const TakeShape& shape, std::int64_t frames, bool padded = false)
    {
        TakeHeader header(shape);
        header.tell(frames, padded);
        return {reinterpret_cast<const char*>(header.bytes().data()), static_cast<qsizetype>(header.bytes().size())};
    }

    QByteArray audioOf(const std::vector<int>& numbers)
    {
        std::vector<float> samples(numbers.size());
        std::ranges::transform(
            numbers, samples.begin(), [](int number) { return static_cast<float>(number / fullScale); });
        QByteArray bytes(static_cast<qsizetype>(numbers.size() * packedPcm::sampleBytes), '\0');
        packedPcm::pack(
            samples, std::as_writable_bytes(std::span(bytes.data(), static_cast<std::size_t>(bytes.size()))));
        return bytes;
    }

    const std::array shapes{TakeShape{TakeFormat::caf, 48000, 1}, TakeShape{TakeFormat::caf, 44100, 2},
        TakeShape{TakeFormat::caf, 96000, 8}, TakeShape{TakeFormat::wav, 48000, 1},
        TakeShape{TakeFormat::wav, 44100, 2}, TakeShape{TakeFormat::wav, 96000, 7}};

    QString nameOf(const TakeShape& shape)
    {
        return QStringLiteral("%1-%2.%3").arg(shape.channels).arg(shape.sampleRate).arg(rawValue(shape.format));
    }

}  // namespace

TEST(AudioRing, TakesABlockWholeOrNotAtAll)
{
    const auto heldRing = makeRing(10);
    AudioRing& ring = *heldRing;
    const std::vector<float> samples{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    EXPECT_FALSE(ring.write(samples));
    EXPECT_TRUE(ring.write(std::span(samples).first(7)));
    EXPECT_FALSE(ring.write(std::span(samples).first(4)));
    EXPECT_EQ(ring.readable().size(), 7U);
    ring.consume(5);
    EXPECT_TRUE(ring.write(std::span(samples).subspan(7, 4)));
    std::vector<float> read(ring.readable().first.begin(), ring.readable().first.end());
    read.insert(read.end(), ring.readable().second.begin(), ring.readable().second.end());
    EXPECT_EQ(read, (std::vector<float>{6, 7, 8, 9, 10, 11}));
    EXPECT_EQ(ring.readable().second.size(), 1U);
}

TEST(AudioRing, CarriesEverySampleInOrderBetweenTwoThreads)
{
    constexpr std::size_t total = 400'000;
    const auto heldRing = makeRing(997);
    AudioRing& ring = *heldRing;
    std::thread producer([&ring] {
        std::vector<float> block;
        std::mt19937 random(1);
        for (std::size_t next = 0; next < total;) {
            block.resize(std::min<std::size_t>(1 + random() % 300, total - next));
            std::ranges::generate(block, [&next] { return static_cast<float>(next++); });
            while (!ring.write(block)) {
                std::this_thread::yield();
            }
        }
    });
    std::size_t expected = 0;
    std::size_t wrong = 0;
    while (expected < total) {
        const AudioRing::Readable readable = ring.readable();
        for (const std::span<const float> part : {readable.first, readable.second}) {
            for (const float sample : part) {
                wrong += sample == static_cast<float>(expected++) ? 0U : 1U;
            }
        }
        ring.consume(readable.size());
        if (readable.size() == 0) {
            std::this_thread::yield();
        }
    }
    producer.join();
    EXPECT_EQ(wrong, 0U);
}

TEST(PackedPcm, KeepsEvery24BitNumber)
{
    constexpr int step = 1 << 20;
    for (int first = -(1 << 23); first < 1 << 23; first += step) {
        std::vector<float> samples(step);
        for (int index = 0; index < step; ++index) {
            samples[static_cast<std::size_t>(index)] = static_cast<float>((first + index) / fullScale);
        }
        expectPacked(samples);
    }
}

TEST(PackedPcm, RoundsAndHoldsEveryOtherFloat)
{
    using Limits = std::numeric_limits<float>;
    std::vector<float> samples{Limits::quiet_NaN(), -Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(),
        Limits::max(), Limits::lowest(), Limits::denorm_min(), -0.0F, 1.0F, -1.0F, 1.0000001F, -1.0000001F, 0.99999994F,
        -0.99999994F};
    for (const double number : {0.5, 1.5, 2.5, 0.49999997, 4194304.5, 4194305.5, 8388606.5, 8388607.5}) {
        samples.push_back(static_cast<float>(number / fullScale));
        samples.push_back(static_cast<float>(-number / fullScale));
    }
    for (std::size_t size = 0; size < 10; ++size) {
        expectPacked({samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(size)});
    }
    std::mt19937 random(7);
    for (int index = 0; index < 1'000'000; ++index) {
        samples.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(random())));
    }
    expectPacked(samples);
}

class TakeOnDisk : public SandboxTest { };

TEST_F(TakeOnDisk, OpensElsewhereWithItsAudioAndComesBackFromItsHeader)
{
    constexpr std::int64_t frames = 1001;
    for (const TakeShape& shape : shapes) {
        SCOPED_TRACE(qPrintable(nameOf(shape)));
        const std::vector<int> numbers = noise(static_cast<std::size_t>(frames * shape.channels));
        const bool padded = TakeHeader(shape).needsPadding(frames);
        const QByteArray header = headerOf(shape, frames, padded);
        Sandbox::writeFile(m_sandbox.path(nameOf(shape)), header + audioOf(numbers) + QByteArray(padded ? 1 : 0, '\0'));
        const SoundFile file = SoundFile::read(m_sandbox.path(nameOf(shape)));
        EXPECT_EQ(file.frames, frames);
        EXPECT_EQ(file.channels, shape.channels);
        EXPECT_EQ(file.sampleRate, static_cast<int>(shape.sampleRate));
        EXPECT_EQ(file.numbers, numbers);

        const auto parsed = TakeHeader::parse(std::as_bytes(std::span(header.constData(), TakeHeader::size)));
        ASSERT_TRUE(parsed);
        EXPECT_EQ(parsed->shape(), shape);
        EXPECT_EQ(parsed->frames(), frames);
    }
}

TEST_F(TakeOnDisk, OpensElsewhereAtTheLimitOfWav)
{
    const TakeShape shape{TakeFormat::wav, 48000, 2};
    const std::int64_t frames = TakeHeader(shape).maxFrames();
    EXPECT_EQ(frames * shape.frameBytes(), 4'294'963'206);
    const QString path = m_sandbox.path(QStringLiteral("full.wav"));
    Sandbox::writeFile(path, headerOf(shape, frames));
    ASSERT_TRUE(QFile::resize(path, 4096 + frames * shape.frameBytes()));
    EXPECT_EQ(SoundFile::read(path, false).frames, frames);
}

TEST_F(TakeOnDisk, IsMendedWhereverItWasCut)
{
    std::mt19937 random(3);
    for (const TakeShape& shape : shapes) {
        const QByteArray bytes =
            headerOf(shape, 40) + audioOf(noise(std::size_t{100} * static_cast<std::size_t>(shape.channels)));
        std::vector<qsizetype> cuts{0, 8, 12, 20, 52, 4080, 4088, 4095, 4096, 4097, 4096 + 40 * shape.frameBytes()};
        for (std::int64_t cut = 0; cut < 2 * shape.frameBytes() && cut < 8; ++cut) {
            cuts.push_back(bytes.size() - cut);
        }
        for (int index = 0; index < 20; ++index) {
            cuts.push_back(static_cast<qsizetype>(random() % static_cast<unsigned>(bytes.size())));
        }
        for (const qsizetype cut : cuts) {
            SCOPED_TRACE(qPrintable(nameOf(shape) + QStringLiteral(" cut at %1").arg(cut)));
            const QString path = m_sandbox.path(nameOf(shape));
            Sandbox::writeFile(path, bytes.first(cut));
            const QDateTime before(QDate(2026, 1, 2), QTime(3, 4, 5));
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.setFileTime(before, QFileDevice::FileModificationTime));
            file.close();

            const Result<TakeRepair> repair = repairTake(path);
            ASSERT_TRUE(repair);
            const QByteArray after = Sandbox::readFile(path);
            EXPECT_EQ(QFileInfo(path).lastModified(), before);
            if (cut < 4096) {
                EXPECT_EQ(repair->outcome, TakeRepair::Outcome::notATake);
                EXPECT_EQ(after, bytes.first(cut));
                continue;
            }
            const std::int64_t frames = (cut - 4096) / shape.frameBytes();
            EXPECT_EQ(repair->frames, frames);
            EXPECT_EQ(repair->framesBefore, 40);
            EXPECT_EQ(after.sliced(4096), bytes.first(cut).sliced(4096));
            EXPECT_EQ(SoundFile::read(path, false).frames, frames);
            EXPECT_EQ(repairTake(path)->outcome, TakeRepair::Outcome::whole);
            EXPECT_EQ(Sandbox::readFile(path), after);
        }
    }
}

TEST_F(TakeOnDisk, GivesBackItsReserveOnceNobodyWritesIt)
{
    const QString path = m_sandbox.path(QStringLiteral("dead.caf"));
    Sandbox::writeFile(path, headerOf({TakeFormat::caf, 48000, 2}, 10) + audioOf(noise(200)));
    const FileDescriptor writer(::open(qPrintable(path), O_RDWR | O_CLOEXEC));
    if (::fallocate(writer.get(), FALLOC_FL_KEEP_SIZE, 0, off_t{8} << 20) != 0) {
        GTEST_SKIP() << "this volume reserves no room";
    }
    ASSERT_EQ(::flock(writer.get(), LOCK_EX), 0);
    EXPECT_EQ(repairTake(path)->frames, 10);
    ASSERT_EQ(::flock(writer.get(), LOCK_UN), 0);
    EXPECT_EQ(repairTake(path)->frames, 100);
    struct stat status = {};
    ASSERT_EQ(::fstat(writer.get(), &status), 0);
    EXPECT_LT(status.st_blocks * 512, 1 << 20);
}

TEST_F(TakeOnDisk, OfSomebodyElseIsLeftAlone)
{
    const TakeShape wav{TakeFormat::wav, 48000, 2};
    const TakeShape caf{TakeFormat::caf, 48000, 2};
    const QByteArray audio = audioOf(noise(200));
    QByteArray otherHeader = headerOf(wav, 50);
    otherHeader[100] = 'x';
    const std::vector<QByteArray> files{
        otherHeader + audio,
        headerOf(wav, 100) + audio + QByteArray("LIST\4\0\0\0INFO", 12),
        headerOf(caf, 100) + audio + QByteArray("info\0\0\0\0\0\0\0\4\0\0\0\0", 16),
        QByteArray(5000, '\0'),
    };
    for (std::size_t index = 0; index < files.size(); ++index) {
        SCOPED_TRACE(index);
        const QString path = m_sandbox.path(QStringLiteral("takes/%1.wav").arg(index));
        Sandbox::writeFile(path, files[index]);
        EXPECT_EQ(repairTake(path)->outcome, TakeRepair::Outcome::notATake);
        EXPECT_EQ(Sandbox::readFile(path), files[index]);
    }
    const QByteArray torn = headerOf(caf, 3) + audio;
    Sandbox::writeFile(m_sandbox.path(QStringLiteral("elsewhere.caf")), torn);
    ASSERT_TRUE(
        QFile::link(m_sandbox.path(QStringLiteral("elsewhere.caf")), m_sandbox.path(QStringLiteral("takes/link.caf"))));
    Sandbox::writeFile(m_sandbox.path(QStringLiteral("takes/torn.caf")), torn);

    EXPECT_EQ(repairTakes(m_sandbox.path(QStringLiteral("takes"))),
        QStringList{m_sandbox.path(QStringLiteral("takes/torn.caf"))});
    EXPECT_EQ(Sandbox::readFile(m_sandbox.path(QStringLiteral("elsewhere.caf"))), torn);
    EXPECT_FALSE(repairTake(m_sandbox.path(QStringLiteral("takes/none.caf"))));
}

}  // namespace vantiro::test
