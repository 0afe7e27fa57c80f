// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeWriter.h"

#include "core/capture/AudioRing.h"
#include "core/capture/PackedPcm.h"
#include "core/foundation/Log.h"

#include <QFileInfo>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace vantiro {

namespace {

    using Clock = std::chrono::steady_clock;

    constexpr std::int64_t audioOffset = TakeHeader::size;
    // Large enough that a write costs no more than its bytes, small enough to stay in the processor's cache.
    constexpr std::size_t pieceBytes = std::size_t{256} << 10U;
    constexpr int mostNames = 10'000;

    bool isFull(int number)
    {
        return number == ENOSPC || number == EDQUOT || number == EFBIG;
    }

    std::int64_t framesIn(std::chrono::milliseconds span, double sampleRate)
    {
        return static_cast<std::int64_t>(std::ceil(std::chrono::duration<double>(span).count() * sampleRate));
    }

    std::unexpected<Error> creationFailure(const QString& path, int number)
    {
        if (number == ENOSPC || number == EDQUOT) {
            const QString sentence =
                QStringLiteral("There is no room for a take in %1. Free some space, or choose another folder.");
            return captureFailure(sentence.arg(QFileInfo(path).path()));
        }
        return captureFailure(QStringLiteral("cannot create %1: %2").arg(path).arg(number));
    }

    /// Renames what stands at the path to the first free numbered name. 0 or a positive errno.
    int moveAside(const QString& path, TakeStorage& storage)
    {
        const QFileInfo info(path);
        const QString stem = info.path() + u'/' + info.completeBaseName();
        const QString ending = info.suffix().isEmpty() ? QString() : u'.' + info.suffix();
        for (int number = 2; number < mostNames; ++number) {
            const QString name = stem + u'_' + QString::number(number) + ending;
            const int result = storage.renameToFree(path, name);
            if (result == 0) {
                logLine(QStringLiteral("%1 was there already and is now called %2.").arg(path, name));
            }
            if (result != EEXIST) {
                return result;
            }
        }
        return EEXIST;
    }

    std::expected<std::unique_ptr<TakeFile>, int> makeFile(const QString& path, TakeStorage& storage)
    {
        auto file = storage.create(path);
        if (!file && file.error() == EEXIST && moveAside(path, storage) == 0) {
            file = storage.create(path);
        }
        return file;
    }

}  // namespace

/// The ring, the thread and the file. The producer calls offer() alone; the file belongs to the thread as long as that
/// runs; the rest is atomic.
class TakeWriter::Worker {
public:
    Worker(const Options& options, TakeStorage& storage, std::unique_ptr<TakeFile> file)
        : m_options(options)
        , m_storage(storage)
        , m_file(std::move(file))
        , m_header(TakeShape{options.format, options.sampleRate, options.channels})
        , m_ring(static_cast<std::size_t>(framesIn(options.ring, options.sampleRate) * options.channels))
        , m_packed(std::max(pieceBytes, frameBytes()))
    { }

    /// Brings the header to the disk and finds the take's last frame. 0 or a positive errno.
    int prepare()
    {
        if (const int number = m_file->writeAt(0, m_header.bytes()); number != 0) {
            return number;
        }
        keepRoom();
        if (ending()) {
            return ENOSPC;
        }
        if (const int number = m_file->syncAll(); number != 0) {
            return number;
        }
        if (const int number = m_storage.syncFolderOf(m_options.path); number != 0) {
            return number;
        }
        return findLastFrame();
    }

    /// 0 or a positive errno.
    int start()
    {
        try {
            m_thread = std::thread([this] { run(); });
        } catch (const std::system_error& error) {
            return error.code().value();
        }
        return 0;
    }

    Offer offer(const float* interleaved, std::int64_t frames) noexcept
    {
        if (frames <= 0) {
            return {Offer::accepted, 0};
        }
        if (m_ending.load(std::memory_order_acquire) != noEnding) {
            return {Offer::ended, 0};
        }
        const std::int64_t wanted = std::min(frames, m_lastFrame - m_taken);
        const auto samples = static_cast<std::size_t>(wanted) * static_cast<std::size_t>(m_options.channels);
        if (!m_ring.write({interleaved, samples})) {
            return {Offer::full, 0};
        }
        m_taken += wanted;
        if (m_taken == m_lastFrame) {
            end(m_lastFrameEnding);
        }
        return {wanted == frames ? Offer::accepted : Offer::ended, wanted};
    }

    std::optional<WriterEnding> ending() const noexcept
    {
        const int value = m_ending.load(std::memory_order_acquire);
        return value == noEnding ? std::nullopt : std::optional(static_cast<WriterEnding>(value));
    }

    std::int64_t writeErrors() const noexcept { return m_writeErrors.load(std::memory_order_relaxed); }
    std::int64_t writtenFrames() const noexcept { return m_written.load(std::memory_order_relaxed); }

    std::optional<std::int64_t> close()
    {
        if (m_thread.joinable()) {
            {
                const std::lock_guard lock(m_mutex);
                m_isClosing = true;
            }
            m_wake.notify_one();
            m_thread.join();
            m_fileFrames = readBack();
        }
        return m_fileFrames;
    }

    void discard()
    {
        if (close() == 0) {
            static_cast<void>(m_storage.remove(m_options.path));
        }
    }

private:
    static constexpr int noEnding = -1;

    [[nodiscard]] std::size_t frameBytes() const { return static_cast<std::size_t>(m_header.shape().frameBytes()); }
    [[nodiscard]] std::int64_t endOfAudio() const
    {
        return audioOffset + writtenFrames() * m_header.shape().frameBytes();
    }

    /// The first reason stays. RT safe.
    void end(WriterEnding ending) noexcept
    {
        int expected = noEnding;
        m_ending.compare_exchange_strong(expected, static_cast<int>(ending), std::memory_order_acq_rel);
    }

    int findLastFrame()
    {
        const std::int64_t bytes = m_header.shape().frameBytes();
        m_lastFrame = m_header.maxFrames();
        if (m_options.format == TakeFormat::wav) {
            m_lastFrame = std::min(m_lastFrame, m_options.wavAudioBytes / bytes);
        }
        if (const auto largest = m_file->largestFile()) {
            const std::int64_t frames = (*largest - audioOffset - m_options.roomToKeep) / bytes;
            if (frames < m_lastFrame) {
                m_lastFrame = frames;
                m_lastFrameEnding = WriterEnding::diskFull;
            }
        }
        return m_lastFrame > 0 ? 0 : ENOSPC;
    }

    void run()
    {
        // Signals are for the main thread; here they would only interrupt the disk.
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, nullptr);

        Clock::time_point nextSync = Clock::now() + m_options.syncEvery;
        Clock::time_point nextRoom = Clock::now() + m_options.roomEvery;
        while (!waitForClose()) {
            append();
            if (Clock::now() >= nextSync) {
                settle();
                nextSync = Clock::now() + m_options.syncEvery;
            }
            if (Clock::now() >= nextRoom) {
                keepRoom();
                nextRoom = Clock::now() + m_options.roomEvery;
            }
        }
        finish();
    }

    /// The producer wakes nobody, so the thread looks for itself after each step. True once the take is to be closed.
    bool waitForClose()
    {
        std::unique_lock lock(m_mutex);
        return m_wake.wait_for(lock, m_options.appendEvery, [this] { return m_isClosing; });
    }

    /// Carries to the file what the ring holds now.
    void append()
    {
        // What arrives meanwhile waits for the next step, else a slow disk would keep the header from ever being told.
        const auto channels = static_cast<std::size_t>(m_options.channels);
        for (std::size_t left = m_ring.readable().size(); left > 0 && !m_isBroken;) {
            const std::span<const float> part = m_ring.readable().first;
            const std::size_t most = m_packed.size() / frameBytes() * channels;
            const std::span<const float> samples = part.first(std::min({part.size(), left, most}));
            const std::span<std::byte> bytes = std::span(m_packed).first(samples.size() * packedPcm::sampleBytes);
            packedPcm::pack(samples, bytes);
            if (const int number = m_file->writeAt(endOfAudio(), bytes); number != 0) {
                writeFailed(number);
                return;
            }
            m_ring.consume(samples.size());
            left -= samples.size();
            m_written.store(
                writtenFrames() + static_cast<std::int64_t>(samples.size() / channels), std::memory_order_relaxed);
        }
    }

    /// Syncs the audio, then lets the header tell it: never the other way round.
    void settle()
    {
        std::int64_t frames = writtenFrames();
        if (m_header.needsPadding(frames)) {
            --frames;  // Where the padding would stand, the next frame begins.
        }
        if (frames > m_header.frames() && sync()) {
            tell(frames, false);
        }
    }

    bool sync()
    {
        if (m_isSyncBroken) {
            return false;
        }
        const int number = m_file->syncData();
        if (number != 0) {
            syncFailed(number);
        }
        return number == 0;
    }

    void tell(std::int64_t frames, bool padded)
    {
        m_header.tell(frames, padded);
        const TakeHeader::Piece piece = m_header.sizePiece();
        if (const int number = m_file->writeAt(piece.offset, piece.bytes); number != 0) {
            writeFailed(number);
        }
    }

    /// Ends the take while the volume still has room to close it whole, and reserves places for the audio to come.
    void keepRoom()
    {
        const std::optional<std::int64_t> free = m_file->freeBytes();
        if (free && *free < m_options.roomToKeep) {
            end(WriterEnding::diskFull);
            return;
        }
        const std::int64_t ahead =
            framesIn(m_options.reserveAhead, m_options.sampleRate) * m_header.shape().frameBytes();
        const bool isDue = m_reservedEnd - endOfAudio() <= ahead / 2;
        if (!m_canReserve || !isDue || (free && *free - ahead < m_options.roomToKeep)) {
            return;
        }
        const std::int64_t target = endOfAudio() + ahead;
        const int number = m_file->reserve(target);
        if (number == 0) {
            m_reservedEnd = target;
        } else if (number == ENOSPC || number == EDQUOT) {
            // Half of the last reserve is still ahead, more than the ring can hold.
            end(WriterEnding::diskFull);
        } else {
            m_canReserve = false;
        }
    }

    void writeFailed(int number)
    {
        if (isFull(number) && !m_isFinishing) {
            // Not yet a loss: the ring keeps its frames, and each step and the close try again.
            if (!ending()) {
                logLine(QStringLiteral("%1: %2").arg(m_options.path, errnoText(number)));
            }
            end(WriterEnding::diskFull);
            return;
        }
        m_isBroken = true;
        countFailure(number);
    }

    void syncFailed(int number)
    {
        // The system may have dropped the pages that it could not write, and a second call would then succeed over a
        // hole. So nothing is synced, nor told by the header, ever again.
        m_isBroken = true;
        m_isSyncBroken = true;
        countFailure(number);
    }

    void countFailure(int number)
    {
        m_writeErrors.fetch_add(1, std::memory_order_relaxed);
        end(isFull(number) ? WriterEnding::diskFull : WriterEnding::writeFailed);
        logLine(QStringLiteral("%1: %2").arg(m_options.path, errnoText(number)));
    }

    void finish()
    {
        m_isFinishing = true;
        append();
        bool padded = false;
        if (m_header.needsPadding(writtenFrames()) && !m_isBroken) {
            const std::array<std::byte, 1> padding{};
            const int number = m_file->writeAt(endOfAudio(), padding);
            padded = number == 0;
            if (!padded) {
                writeFailed(number);
            }
        }
        if (sync()) {
            tell(writtenFrames(), padded);
        }
        m_file->trimReserve();
        if (!m_isSyncBroken) {
            if (const int number = m_file->syncAll(); number != 0) {
                syncFailed(number);
            }
            if (const int number = m_storage.syncFolderOf(m_options.path); number != 0) {
                countFailure(number);
            }
        }
        if (m_lastFrameEnding == WriterEnding::diskFull && writtenFrames() == m_lastFrame) {
            logLine(QStringLiteral("%1 has come close to the largest file that its volume holds.").arg(m_options.path));
        }
        m_file.reset();
    }

    /// The frames that the header tells and the file has.
    std::optional<std::int64_t> readBack()
    {
        std::array<std::byte, TakeHeader::size> start{};
        const std::optional<std::int64_t> size = m_storage.readStart(m_options.path, start);
        const std::optional<TakeHeader> header = TakeHeader::parse(start);
        if (!size || !header) {
            return std::nullopt;
        }
        return std::min(header->frames(), (*size - audioOffset) / header->shape().frameBytes());
    }

    Options m_options;
    TakeStorage& m_storage;
    std::unique_ptr<TakeFile> m_file;
    TakeHeader m_header;
    AudioRing m_ring;
    std::vector<std::byte> m_packed;

    std::int64_t m_taken = 0;  ///< Frames in the take so far, the producer's own.

    // Set before the thread and the first offer, and never changed.
    std::int64_t m_lastFrame = 0;
    WriterEnding m_lastFrameEnding = WriterEnding::wavLimit;

    std::atomic<int> m_ending{noEnding};
    std::atomic<std::int64_t> m_writeErrors{0};
    std::atomic<std::int64_t> m_written{0};

    // The writer thread's own.
    std::int64_t m_reservedEnd = 0;
    bool m_canReserve = true;
    bool m_isBroken = false;      ///< No more audio is written.
    bool m_isSyncBroken = false;  ///< Nothing is synced or told any more.
    bool m_isFinishing = false;

    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_isClosing = false;  ///< Guarded by m_mutex.
    std::thread m_thread;
    std::optional<std::int64_t> m_fileFrames;
};

Result<std::unique_ptr<TakeWriter>> TakeWriter::create(const Options& options, TakeStorage& storage)
{
    const TakeShape shape{options.format, options.sampleRate, options.channels};
    if (!shape.isValid() || framesIn(options.ring, options.sampleRate) < 1) {
        return creationFailure(options.path, EINVAL);
    }
    if (const auto free = storage.freeBytesAt(options.path); free && *free < options.roomToKeep) {
        return creationFailure(options.path, ENOSPC);
    }
    auto file = makeFile(options.path, storage);
    if (!file) {
        return creationFailure(options.path, file.error());
    }
    auto worker = std::make_unique<Worker>(options, storage, std::move(*file));
    int number = worker->prepare();
    if (number == 0) {
        number = worker->start();
    }
    if (number != 0) {
        worker.reset();
        static_cast<void>(storage.remove(options.path));
        return creationFailure(options.path, number);
    }
    return std::unique_ptr<TakeWriter>(new TakeWriter(std::move(worker)));
}

TakeWriter::TakeWriter(std::unique_ptr<Worker> worker) : m_worker(std::move(worker)) { }

TakeWriter::~TakeWriter()
{
    m_worker->close();
}

FrameSink::Offer TakeWriter::offer(const float* interleaved, std::int64_t frames) noexcept
{
    return m_worker->offer(interleaved, frames);
}

std::optional<WriterEnding> TakeWriter::ending() const noexcept
{
    return m_worker->ending();
}

std::int64_t TakeWriter::writeErrors() const noexcept
{
    return m_worker->writeErrors();
}

std::int64_t TakeWriter::writtenFrames() const noexcept
{
    return m_worker->writtenFrames();
}

std::optional<std::int64_t> TakeWriter::close()
{
    return m_worker->close();
}

void TakeWriter::discard()
{
    m_worker->discard();
}

}  // namespace vantiro
