// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"
#include "tests/support/FakeOutput.h"

#include <atomic>
#include <map>
#include <memory>
#include <vector>

namespace vantiro::test {

/// A device of the fake platform, driven by the test: each call that moves audio or raises an event does so on its own
/// thread, in every stream that is started, and has ended when it returns. Any thread.
class FakeSource {
public:
    /// `buffers` are the channel counts of its buffers, none of them 0; their sum is written into the record.
    FakeSource(AudioDevice record, std::vector<std::int64_t> buffers);

    /// The next block: samples of each channel of the device. A buffer is as long as its first channel; the clock moves
    /// on by that of the device, and host time runs exactly at the source's rate.
    void deliver(const std::vector<std::vector<float>>& channels);
    /// The next block, with the same sample in all of these frames and channels.
    void deliver(std::int64_t frames, float sample);
    /// Frames that are lost: the clock moves on without a block.
    void skip(std::int64_t frames);
    /// The source goes on at another rate.
    void setRate(double rate);
    /// The source is gone for good.
    void disconnect();

    [[nodiscard]] AudioDevice record() const;
    [[nodiscard]] bool isOpen() const;
    /// A stream of it is started.
    [[nodiscard]] bool isRunning() const;

    std::atomic<int> openStatus{0};           ///< What the next opening fails with.
    std::atomic<int> startStatus{0};          ///< What the next start fails with.
    std::atomic<int> timesOpened{0};          ///< Streams that were made of it so far.
    std::atomic<float> sampleAtStart{0};      ///< If not 0, a short block of it arrives with each start.
    std::atomic<bool> isHeldByOthers{false};  ///< Another program keeps it at its rate.

private:
    friend class FakeAudio;
    struct Stream;
    void tell(std::function<void()> CaptureStream::Listener::* event);

    AudioDevice m_record;
    std::vector<std::int64_t> m_buffers;
    std::vector<Stream*> m_streams;
    double m_hostSeconds = 1;
    std::int64_t m_sampleTime = 1000;
    std::atomic<double> m_rate;
    std::atomic<bool> m_alive{true};
};

/// An audio platform without audio: the devices that a test puts there. Outlives its watches.
class FakeAudio final : public AudioPlatform {
public:
    /// A new device at the end of the list.
    std::shared_ptr<FakeSource> add(
        const QString& uid, const QString& name, std::vector<std::int64_t> buffers, double rate = 48'000);
    /// The same with everything else that its record says; the channels are those of the buffers.
    std::shared_ptr<FakeSource> add(const AudioDevice& record, std::vector<std::int64_t> buffers);
    /// The device is unplugged.
    void remove(const QString& uid);
    /// The device, or a tap, behind a UID; null if there is none.
    [[nodiscard]] std::shared_ptr<FakeSource> source(const QString& uid) const { return find(uid); }

    std::atomic<bool> available{true};
    std::optional<QString> defaultInput;  ///< Set before other threads are there.

    bool isAvailable() override { return available; }
    std::vector<AudioDevice> devices() override;
    /// The same with the taps that are open.
    [[nodiscard]] std::vector<AudioDevice> devicesAndTaps() const;
    std::optional<AudioDevice> device(const QString& uid) override;
    std::optional<QString> defaultInputUID() override { return defaultInput; }
    std::vector<std::int64_t> inputBuffers(const QString& uid) override;
    /// The device's own rate.
    std::optional<TakeRate> takeRate(const QString& uid) override;
    std::expected<std::unique_ptr<CaptureStream>, int> openCapture(
        const QString& uid, std::span<const std::int64_t> channels, CapturePurpose purpose) override;
    /// The programs that a test puts there, and the devices that all of them play to.
    std::vector<AudioProcess> programs;
    std::vector<AudioDevice> programDevices;
    std::atomic<int> tapStatus{0};  ///< What each tap fails with.
    double tapRate = 48'000;        ///< Of the taps that are made from now on.

    std::vector<AudioProcess> processes() override { return programs; }
    std::vector<AudioDevice> outputDevices(const AudioProcess&) override { return programDevices; }
    /// The tap becomes a device of this platform.
    std::expected<std::unique_ptr<AudioTap>, int> openTap(
        const AudioProcess& process, const AudioTap::Request& request) override;

    std::atomic<int> playbackStatus{0};  ///< What each output fails to open with.
    std::atomic<int> outputsOpened{0};   ///< So far.

    std::expected<std::unique_ptr<PlaybackStream>, int> openPlayback(
        const PlaybackStream::Request& request, PlaybackSource& source) override;
    /// The output that was opened last, also when it is closed again; null if none was.
    [[nodiscard]] std::shared_ptr<FakeOutput> output() const;

    std::unique_ptr<HardwareWatch> watch(std::function<void()> onChange) override;
    /// Tells the watches that something changed; devices that come and go do so by themselves.
    void tellWatches();

private:
    class Tap;
    class Watch;
    [[nodiscard]] std::shared_ptr<FakeSource> find(const QString& uid) const;

    std::vector<std::shared_ptr<FakeSource>> m_sources;
    std::shared_ptr<FakeOutput> m_output;
    std::map<const Watch*, std::function<void()>> m_watches;
};

}  // namespace vantiro::test
