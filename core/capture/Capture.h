// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/CaptureStats.h"
#include "core/capture/IOState.h"
#include "core/capture/TakeWriter.h"
#include "core/platform/AudioPlatform.h"

#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace vantiro {

/// The live audio of one input: picks the wanted channels, writes them to a take file if it has one, and keeps the
/// books. The recorder gives it a file and lets it run for hours; the meter gives none and polls peaks.
///
/// The audio thread sees only the IOState. Everything else belongs to the thread that built the capture, but for the
/// two callbacks, which may come on any thread. A capture never stops by itself: its owner decides what an event means.
class Capture {
public:
    struct Options {
        QString deviceUID;
        std::optional<std::vector<std::int64_t>> channels;  ///< Counted from 1; the first two if absent.
        std::optional<QString> filePath;                    ///< Absolute; a meter without one.
        TakeFormat format = TakeFormat::caf;
    };

    /// Opens the input, and makes the take file if one is wanted. May wait for the source's first cycle, 2 seconds at
    /// the most. Each failure is a CaptureError, and then no file stays behind:
    /// "device not connected: {uid}", "{name} has no input channels", "{name} has input channels 1 to {n}, asked for
    /// [{list}]", "cannot create the IOProc: {errno}", "cannot create {path}: {errno}", and the sentence for a full
    /// disk.
    [[nodiscard]] static Result<std::unique_ptr<Capture>> open(
        const Options& options, AudioPlatform& audio, TakeStorage& storage);

    /// Stops, and closes the file whole.
    ~Capture();

    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// Lets the audio in. Nothing happens if it runs already. Fails with "cannot start {name}: {errno}".
    [[nodiscard]] Result<void> start();
    /// Ends the audio, closes the file and reads its length. May be called again, with the same result.
    CaptureStats stop();
    /// The account so far.
    [[nodiscard]] CaptureStats stats() const;
    /// Ends the audio and removes the file if no frame reached it: for a take that never began.
    void discard();

    /// Largest magnitude of all channels since the last call, linear.
    [[nodiscard]] float takeBlockPeak() noexcept { return m_io.takeBlockPeak(); }
    /// The same of the first and the second channel; of the first twice if there is one only.
    [[nodiscard]] std::pair<float, float> takeChannelPeaks() noexcept;

    /// Frames delivered so far. Any thread.
    [[nodiscard]] std::int64_t frames() const noexcept { return m_io.frames(); }
    /// Why the file wants the take to end; nothing for a meter.
    [[nodiscard]] std::optional<WriterEnding> writerEnding() const;
    /// The source has gone. Any thread.
    [[nodiscard]] bool deviceLost() const noexcept { return m_deviceLost.load(std::memory_order_relaxed); }
    /// The source runs at another rate than the take's; it stays true when the old rate comes back. Any thread.
    [[nodiscard]] bool rateChanged() const noexcept { return m_rateChanged.load(std::memory_order_relaxed); }

    [[nodiscard]] const AudioDevice& device() const noexcept { return m_device; }
    [[nodiscard]] const std::vector<std::int64_t>& channels() const noexcept { return m_channels; }
    [[nodiscard]] double sampleRate() const noexcept { return m_sampleRate; }
    [[nodiscard]] const std::optional<QString>& filePath() const noexcept { return m_filePath; }
    [[nodiscard]] QString schedulingNote() const { return m_stream->schedulingNote(); }

    /// Both are set before start(), and called on a thread of the platform.
    void setOnDeviceLost(std::function<void()> callback) { m_onDeviceLost = std::move(callback); }
    void setOnRateChanged(std::function<void()> callback) { m_onRateChanged = std::move(callback); }

private:
    Capture(AudioDevice device, std::vector<std::int64_t> channels, const std::vector<std::int64_t>& bufferChannels,
        std::unique_ptr<CaptureStream> stream);

    void checkAlive();
    void checkRate();
    void endAudio();

    AudioDevice m_device;
    std::vector<std::int64_t> m_channels;
    double m_sampleRate = 0;
    std::optional<QString> m_filePath;
    std::atomic<bool> m_deviceLost{false};
    std::atomic<bool> m_rateChanged{false};
    bool m_running = false;
    std::optional<std::int64_t> m_finishedFileFrames;
    std::int64_t m_writerErrors = 0;  ///< Of the closed writer.
    std::function<void()> m_onDeviceLost;
    std::function<void()> m_onRateChanged;

    // Destroyed from the last to the first: the stream ends the audio thread's use of what stands above it.
    IOState m_io;
    std::unique_ptr<TakeWriter> m_writer;
    std::unique_ptr<CaptureStream> m_stream;
};

}  // namespace vantiro
