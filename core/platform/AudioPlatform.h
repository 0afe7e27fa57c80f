// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/platform/AudioBlock.h"
#include "core/platform/Playback.h"
#include "core/sources/AudioDevice.h"
#include "core/sources/AudioProcess.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vantiro {

/// Why a capture is opened. A take may ask the platform for the device's own rate; a meter never disturbs anything.
enum class CapturePurpose {
    take,
    meter,
};

/// One opened input. It is connected to its source from the beginning, but hands out blocks only between start() and
/// stop(). Destroying it stops it and lets go of the source.
class CaptureStream {
public:
    /// Told on a thread of the platform; the receiver asks the stream what is the case. May come more than once for one
    /// event, and never after stop().
    struct Listener {
        std::function<void()> aliveChanged;
        std::function<void()> rateChanged;
    };

    virtual ~CaptureStream() = default;

    CaptureStream(const CaptureStream&) = delete;
    CaptureStream& operator=(const CaptureStream&) = delete;

    /// The rate in Hz at which the source ran in its first cycle; its nominal rate if no cycle came in time; 0 if
    /// neither is known. Blocks come at this rate only.
    [[nodiscard]] virtual double sampleRate() const = 0;
    /// The rate in Hz at which the source runs now; 0 if it is unknown. Any thread.
    [[nodiscard]] virtual double currentRate() const = 0;
    /// The source is still there. Any thread.
    [[nodiscard]] virtual bool isAlive() const = 0;

    /// Hands blocks to `handler` from here on; it outlives the next stop(). Returns 0 or a positive errno.
    [[nodiscard]] virtual int start(AudioBlockHandler& handler, Listener listener) = 0;
    /// When it returns, the handler and the listener are no longer in use. Harmless when not started.
    virtual void stop() = 0;
    /// One line for the log on how the audio thread is scheduled; empty if there is nothing to say.
    [[nodiscard]] virtual QString schedulingNote() const = 0;

protected:
    CaptureStream() = default;
};

/// At which rate a take would run.
struct TakeRate {
    double hertz = 0;
    bool setByOthers = false;  ///< Another program uses the device now, and the take has to follow it.

    bool operator==(const TakeRate&) const = default;
};

/// What a program plays, as a device that openCapture() takes. The device is there as long as this object.
class AudioTap {
public:
    struct Request {
        QString uid;                ///< The device's UID from now on.
        std::int64_t channels = 2;  ///< Two for a mixdown, else as many as the program's device has.
    };

    virtual ~AudioTap() = default;

    AudioTap(const AudioTap&) = delete;
    AudioTap& operator=(const AudioTap&) = delete;

protected:
    AudioTap() = default;
};

/// Ends a subscription when it is destroyed; after that the callback is not running and will not run.
class HardwareWatch {
public:
    virtual ~HardwareWatch() = default;

    HardwareWatch(const HardwareWatch&) = delete;
    HardwareWatch& operator=(const HardwareWatch&) = delete;

protected:
    HardwareWatch() = default;
};

/// The machine's audio as the program sees it. Queries answer from the latest picture of the hardware and never wait,
/// but for the very first one (at most 2 seconds, so it does not belong on the main thread). A failed query is an empty
/// list, an absent value or 0. Any thread.
class AudioPlatform {
public:
    virtual ~AudioPlatform() = default;

    AudioPlatform(const AudioPlatform&) = delete;
    AudioPlatform& operator=(const AudioPlatform&) = delete;

    /// The audio service runs and answers.
    [[nodiscard]] virtual bool isAvailable() = 0;

    /// All devices, in the system's order; taps are not among them.
    [[nodiscard]] virtual std::vector<AudioDevice> devices() = 0;
    /// The device with this UID.
    [[nodiscard]] virtual std::optional<AudioDevice> device(const QString& uid) = 0;
    /// The device that the system records from by default.
    [[nodiscard]] virtual std::optional<QString> defaultInputUID() = 0;
    /// Channel counts of the buffers that a capture of this device delivers in each block.
    [[nodiscard]] virtual std::vector<std::int64_t> inputBuffers(const QString& uid) = 0;

    /// The rate at which a take of this device would run if it began now; nothing for a device that is not there.
    [[nodiscard]] virtual std::optional<TakeRate> takeRate(const QString& uid) = 0;

    /// Opens the input and connects the wanted channels (counted from 1, in range); the buffers of channels that are
    /// not wanted stay absent in each block. Waits at most 2 seconds for the source's first cycle. The failure is a
    /// positive errno.
    [[nodiscard]] virtual std::expected<std::unique_ptr<CaptureStream>, int> openCapture(
        const QString& uid, std::span<const std::int64_t> channels, CapturePurpose purpose) = 0;

    /// The programs that play or could play, sorted as AudioProcesses::sort() does; never our own captures.
    [[nodiscard]] virtual std::vector<AudioProcess> processes() = 0;
    /// The devices that a program plays to now, in the order in which it began to.
    [[nodiscard]] virtual std::vector<AudioDevice> outputDevices(const AudioProcess& process) = 0;
    /// Makes a device of what a program plays; its other listeners notice nothing. The failure is a positive errno.
    [[nodiscard]] virtual std::expected<std::unique_ptr<AudioTap>, int> openTap(
        const AudioProcess& process, const AudioTap::Request& request) = 0;

    /// Opens an output that asks `source` for audio from now on; the source outlives the stream. Waits for nobody:
    /// whether anything listens is told by the source being asked. The failure is a positive errno.
    [[nodiscard]] virtual std::expected<std::unique_ptr<PlaybackStream>, int> openPlayback(
        const PlaybackStream::Request& request, PlaybackSource& source) = 0;

    /// Calls `onChange` on a thread of the platform after a device or a program came, went or changed.
    [[nodiscard]] virtual std::unique_ptr<HardwareWatch> watch(std::function<void()> onChange) = 0;

protected:
    AudioPlatform() = default;
};

/// The devices that have an input, in the same order.
[[nodiscard]] std::vector<AudioDevice> inputDevices(AudioPlatform& audio);

}  // namespace vantiro
