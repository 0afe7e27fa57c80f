// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/SourceCapture.h"
#include "core/platform/Platform.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderState.h"
#include "core/recorder/TakeEnding.h"
#include "core/recorder/TakeProtection.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantiro {

/// One take from its first block to its last record: holds the lock, captures, keeps the state file fresh, sees when
/// the take has to end, and closes it whole. One take a process. Everything blocks on the disk at times.
class TakeRecorder {
public:
    /// What to do with a file that stands at the take's path.
    enum class ExistingFile {
        refuse,
        rename,  ///< It gets the next free name; nothing is ever removed.
    };

    struct Request {
        SourceRef source;
        std::optional<std::vector<std::int64_t>> channels;  ///< Counted from 1; the first two if absent.
        TakeFormat format = TakeFormat::caf;
        std::optional<QString> output;  ///< Absolute path of the take; absent: named by the clock, in the takes folder.
        ExistingFile existing = ExistingFile::rename;
        std::function<bool()> stopRequested;  ///< Asked while the start waits.

        std::chrono::milliseconds lockLimit{2'000};         ///< A reader's look at the lock takes it for a moment.
        std::chrono::milliseconds firstBlockLimit{10'000};  ///< Without audio for so long, no take begins.
        std::chrono::milliseconds stallLimit{10'000};       ///< Without audio for so long, a take ends.
    };

    /// The end of a take.
    struct Account {
        RecorderState state;  ///< The final record, as the last take's file has it.
        TakeEnding ending = TakeEnding::stopped;

        /// Everything that was heard is in the file.
        [[nodiscard]] bool isWhole() const { return !(state.stats && state.stats->writeFailed()); }
    };

    /// Takes the lock, mends what a recorder that died left in the takes folder, opens source and file, waits for the
    /// first audio and writes the state. Every failure is one sentence and leaves neither a state nor an empty file.
    /// The platform outlives the recorder.
    [[nodiscard]] static Result<std::unique_ptr<TakeRecorder>> start(
        const Request& request, const Platform& platform, TakeStorage& storage);

    ~TakeRecorder();

    TakeRecorder(const TakeRecorder&) = delete;
    TakeRecorder& operator=(const TakeRecorder&) = delete;

    /// To be called about ten times a second: keeps the state file fresh, and returns why the take has to end, as soon
    /// as it has to. The caller then calls finish().
    [[nodiscard]] std::optional<TakeEnding> tick();

    /// Closes the take, writes the last take's record and removes the state file. The lock goes with this object.
    Account finish(TakeEnding ending);

    [[nodiscard]] const RecorderState& state() const { return m_state; }
    [[nodiscard]] SourceCapture& source() { return *m_source; }

private:
    TakeRecorder(
        RecorderLock lock, std::unique_ptr<SourceCapture> source, const Request& request, const Platform& platform);

    [[nodiscard]] Result<void> waitForFirstBlock();
    [[nodiscard]] Result<void> announce();
    [[nodiscard]] std::optional<TakeEnding> reasonToEnd();
    void refreshState();

    // Destroyed from the last to the first: the lock goes when the take is closed.
    RecorderLock m_lock;
    Request m_request;
    AudioPlatform& m_audio;
    std::shared_ptr<PowerPlatform> m_power;
    std::unique_ptr<SourceCapture> m_source;
    RecorderState m_state;
    std::optional<TakeProtection> m_protection;
    std::chrono::steady_clock::time_point m_stateWritten;
    std::chrono::steady_clock::time_point m_lastAudio;
    std::int64_t m_framesSeen = 0;
};

}  // namespace vantiro
