// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/FrameSink.h"
#include "core/capture/TakeFormat.h"
#include "core/capture/TakeHeader.h"
#include "core/capture/TakeStorage.h"
#include "core/foundation/Result.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace vantiro {

/// Why a writer wants its take to end.
enum class WriterEnding {
    diskFull,     ///< The volume has no room left, or the file has reached the largest size the volume holds.
    wavLimit,     ///< A WAV file cannot hold one more frame.
    writeFailed,  ///< A write or a sync failed; what came before is safe.
};

/// Writes one take: a ring of 30 seconds that the audio thread fills, and one thread that carries it to the disk as
/// 24-bit PCM. At every moment the file's header tells a size that is known to be on the disk, so a process that dies
/// leaves a file that every reader opens. docs/take-format.md has the bytes and the cycle.
class TakeWriter final : public FrameSink {
public:
    struct Options {
        QString path;  ///< Absolute; its folder exists.
        TakeFormat format = TakeFormat::caf;
        double sampleRate = 0;  ///< Hz, above 0.
        int channels = 0;       ///< 1 or more.

        std::chrono::milliseconds ring{30'000};            ///< Audio that waits for a slow disk.
        std::chrono::milliseconds appendEvery{100};        ///< The writer's step.
        std::chrono::milliseconds syncEvery{500};          ///< At most this much is not yet told by the header.
        std::chrono::milliseconds roomEvery{1'000};        ///< How often the volume is asked for its free room.
        std::chrono::milliseconds reserveAhead{60'000};    ///< Audio that has its place on the volume beforehand.
        std::int64_t roomToKeep = std::int64_t{64} << 20;  ///< Free bytes, of volume and largest file, that end a take.
        std::int64_t wavAudioBytes = largestWavAudio;      ///< The most audio in a WAV file, in bytes.
    };

    /// Makes the file with its header, synced with its folder, and starts the writer thread. A regular file that stands
    /// at the path is first renamed to the first free NAME_2.EXT, NAME_3.EXT, …, and standard error says so. Fails with
    /// the CaptureError "cannot create {path}: {errno}"; with "There is no room for a take in {path}. Free some space,
    /// or choose another folder." ({path} being the folder) if the disk is full; nothing is left behind then. The
    /// storage outlives the writer.
    [[nodiscard]] static Result<std::unique_ptr<TakeWriter>> create(const Options& options, TakeStorage& storage);

    /// close(), if that was not done.
    ~TakeWriter() override;

    TakeWriter(const TakeWriter&) = delete;
    TakeWriter& operator=(const TakeWriter&) = delete;

    /// Besides what FrameSink promises: `ended` once ending() tells a value, and for the part of a block that lies
    /// behind the last frame that the file can hold. RT safe.
    Offer offer(const float* interleaved, std::int64_t frames) noexcept override;

    /// Set once the take has ended here: from then on no frame belongs to it. Any thread.
    [[nodiscard]] std::optional<WriterEnding> ending() const noexcept;
    /// Writes and syncs that failed so far. Any thread.
    [[nodiscard]] std::int64_t writeErrors() const noexcept;
    /// Frames on their way to the disk: written to the file so far. Any thread.
    [[nodiscard]] std::int64_t writtenFrames() const noexcept;

    /// Carries what the ring still holds to the disk, closes the file whole, and returns the frames that it holds, read
    /// back from it; nothing if that failed. The producer has stopped before. A second call returns the same.
    std::optional<std::int64_t> close();

    /// close(), and removes the file if it holds no frame: for a take that never began.
    void discard();

private:
    class Worker;
    explicit TakeWriter(std::unique_ptr<Worker> worker);

    std::unique_ptr<Worker> m_worker;
};

}  // namespace vantiro
