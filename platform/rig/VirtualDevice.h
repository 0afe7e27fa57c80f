// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <utility>

namespace vantiro {

/// What a virtual device is made of.
struct VirtualDeviceOptions {
    /// Fills each channel with `frames` samples; `position` is the frame of the content that comes first. Called on
    /// the device's clock thread.
    using Render = std::function<void(std::span<float* const> channels, int frames, std::int64_t position)>;

    enum class Clock {
        own,       ///< Drives the graph at its own rate and quantum, as an audio interface does.
        borrowed,  ///< Is driven by what it is linked to, as a program's stream is.
    };

    QString name = {};         ///< `node.name`.
    QString description = {};  ///< `node.description`; the name if empty.
    int channels = 2;          ///< 1 to 32.
    int sampleRate = 48000;    ///< Hz, 8000 to 192000. A borrowed clock counts before it.
    int quantum = 256;         ///< Frames a cycle, 16 to 8192. A borrowed clock counts before it.
    Clock clock = Clock::own;
    /// Further node properties (`device.bus`, `media.class`, ...). They replace those made from the fields above.
    QList<std::pair<QString, QString>> properties = {};
    /// Properties of the client (`application.name`, ...).
    QList<std::pair<QString, QString>> clientProperties = {};
    Render render = {};  ///< Silence without one.
};

/// A virtual audio interface in the calling process: an `Audio/Source` node with one mono float port a channel, no
/// adapter and no volume, so that what render() writes reaches a linked port bit for bit. The ports are "capture_FL"
/// and "capture_FR", "capture_MONO", or "capture_AUX0" and so on; "output_..." if the media class is a stream's.
///
/// With its own clock the device drives the graph at its own rate, whatever rate others ask for: it paces itself by
/// absolute deadlines and writes position, time and rate of every cycle. It cycles only while something is linked to
/// it; otherwise the content stands still. Late cycles are made up for at once. A cycle waits up to 200 ms for the one
/// before it to be heard by everybody, so a busy machine alone loses nothing; while the graph hangs longer than
/// that (a paused daemon, a client that is stuck), the device runs on and what nobody hears is lost, as a jump of the
/// position. With a borrowed clock it needs the same rate as the device that drives it.
///
/// The injected faults take effect with the next cycle, each exactly once, in the order of the calls. All functions
/// can be called from any thread, but not from render() and not beside the destructor.
class VirtualDevice {
public:
    using Options = VirtualDeviceOptions;

    /// How a device goes on after a hang.
    enum class Resume {
        skipping,  ///< The time that passed is lost: position and content jump by it, in whole frames.
        bursting,  ///< What was due is delivered as fast as the graph takes it.
    };

    /// Connects to the daemon behind `socketPath` and returns once the node and all its ports are in the graph.
    /// Fails when nothing answers within 5 seconds.
    [[nodiscard]] static Result<std::unique_ptr<VirtualDevice>> make(const QString& socketPath, const Options& options);

    /// Removes the node from the graph.
    ~VirtualDevice();

    VirtualDevice(const VirtualDevice&) = delete;
    VirtualDevice& operator=(const VirtualDevice&) = delete;

    /// The node's id in the graph.
    [[nodiscard]] std::uint32_t nodeId() const;
    /// Frames of content that were handed out or skipped so far.
    [[nodiscard]] std::int64_t contentPosition() const;
    /// Cycles that ran so far.
    [[nodiscard]] std::int64_t cycles() const;
    /// The node is in the graph: neither disconnect() was called nor did the daemon go away.
    [[nodiscard]] bool isConnected() const;

    /// The clock's position and the content jump forward by `frames` (backward if negative); the time does not: the
    /// device admits a loss.
    void jumpPosition(std::int64_t frames);
    /// The content and the clock's time jump forward by `frames`, the position does not: the device hides a loss.
    void overrun(std::int64_t frames);
    /// Another sample rate in Hz, 8000 to 192000.
    void setRate(int sampleRate);
    /// Another cycle length in frames, 16 to 8192.
    void setQuantum(int frames);
    /// Another `clock.id`, as if another device had become the driver; 0 gives the node's own again. The position
    /// starts from 0 again, the content goes on.
    void setClockId(std::uint32_t id);
    /// Stops the cycles; the node stays.
    void hang();
    /// Ends a hang.
    void resumeCycles(Resume how = Resume::skipping);
    /// Removes the node from the graph for good, as when its cable is pulled.
    void disconnect();

private:
    struct Private;
    explicit VirtualDevice(std::unique_ptr<Private> device);

    std::unique_ptr<Private> m_private;
};

}  // namespace vantiro
