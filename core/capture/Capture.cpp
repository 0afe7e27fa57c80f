// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/Capture.h"

#include <QStringList>

#include <algorithm>
#include <numeric>

namespace vantiro {

namespace {

    QString listed(const std::vector<std::int64_t>& channels)
    {
        QStringList numbers;
        for (const std::int64_t channel : channels) {
            numbers << QString::number(channel);
        }
        return QLatin1Char('[') + numbers.join(QStringLiteral(", ")) + QLatin1Char(']');
    }

    /// The wanted channels, or the first two.
    Result<std::vector<std::int64_t>> chosenChannels(
        const std::optional<std::vector<std::int64_t>>& wanted, std::int64_t available, const QString& name)
    {
        if (!wanted) {
            return available >= 2 ? std::vector<std::int64_t>{1, 2} : std::vector<std::int64_t>{1};
        }
        const bool inRange = std::ranges::all_of(
            *wanted, [available](std::int64_t channel) { return channel >= 1 && channel <= available; });
        if (wanted->empty() || !inRange) {
            return captureFailure(QStringLiteral("%1 has input channels 1 to %2, asked for %3")
                    .arg(name, QString::number(available), listed(*wanted)));
        }
        return *wanted;
    }

}  // namespace

Result<std::unique_ptr<Capture>> Capture::open(const Options& options, AudioPlatform& audio, TakeStorage& storage)
{
    const std::optional<AudioDevice> device = audio.device(options.deviceUID);
    if (!device) {
        return captureFailure(QStringLiteral("device not connected: %1").arg(options.deviceUID));
    }
    const std::vector<std::int64_t> buffers = audio.inputBuffers(options.deviceUID);
    const std::int64_t available = std::accumulate(buffers.begin(), buffers.end(), std::int64_t{0});
    if (available < 1) {
        return captureFailure(QStringLiteral("%1 has no input channels").arg(device->name));
    }
    auto channels = chosenChannels(options.channels, available, device->name);
    if (!channels) {
        return std::unexpected(channels.error());
    }
    auto stream = audio.openCapture(
        options.deviceUID, *channels, options.filePath ? CapturePurpose::take : CapturePurpose::meter);
    if (!stream) {
        return captureFailure(QStringLiteral("cannot create the IOProc: %1").arg(stream.error()));
    }
    std::unique_ptr<Capture> capture(new Capture(*device, *std::move(channels), buffers, *std::move(stream)));
    if (options.filePath) {
        auto writer = TakeWriter::create({.path = *options.filePath,
                                             .format = options.format,
                                             .sampleRate = capture->m_sampleRate,
                                             .channels = static_cast<int>(capture->m_channels.size())},
            storage);
        if (!writer) {
            return std::unexpected(writer.error());
        }
        capture->m_filePath = options.filePath;
        capture->m_writer = *std::move(writer);
        capture->m_io.setSink(capture->m_writer.get());
    }
    return capture;
}

Capture::Capture(AudioDevice device, std::vector<std::int64_t> channels,
    const std::vector<std::int64_t>& bufferChannels, std::unique_ptr<CaptureStream> stream)
    : m_device(std::move(device))
    , m_channels(std::move(channels))
    , m_sampleRate(stream->sampleRate())
    , m_io(m_channels, bufferChannels)
    , m_stream(std::move(stream))
{ }

Capture::~Capture()
{
    endAudio();
}

Result<void> Capture::start()
{
    if (m_running) {
        return {};
    }
    const int status =
        m_stream->start(m_io, {.aliveChanged = [this] { checkAlive(); }, .rateChanged = [this] { checkRate(); }});
    if (status != 0) {
        return captureFailure(QStringLiteral("cannot start %1: %2").arg(m_device.name).arg(status));
    }
    m_running = true;
    // The rate may have changed, and the source gone, between opening and here.
    checkRate();
    if (!m_stream->isAlive()) {
        checkAlive();
    }
    return {};
}

void Capture::checkAlive()
{
    if (m_stream->isAlive()) {
        return;
    }
    m_deviceLost.store(true, std::memory_order_relaxed);
    if (m_onDeviceLost) {
        m_onDeviceLost();
    }
}

void Capture::checkRate()
{
    // What a dying source says of its rate means nothing.
    if (!m_stream->isAlive() || m_stream->currentRate() == m_sampleRate) {
        return;
    }
    if (!m_rateChanged.exchange(true, std::memory_order_relaxed) && m_onRateChanged) {
        m_onRateChanged();
    }
}

void Capture::endAudio()
{
    m_stream->stop();
    m_running = false;
}

CaptureStats Capture::stop()
{
    endAudio();
    if (m_writer) {
        m_finishedFileFrames = m_writer->close();
        m_writerErrors = m_writer->writeErrors();
        m_io.setSink(nullptr);
        m_writer.reset();
    }
    return stats();
}

void Capture::discard()
{
    endAudio();
    m_io.setSink(nullptr);
    if (m_writer) {
        m_writer->discard();
        m_writer.reset();
    }
}

CaptureStats Capture::stats() const
{
    CaptureStats stats;
    stats.sampleRate = m_sampleRate;
    stats.channels = static_cast<std::int64_t>(m_channels.size());
    stats.frames = m_io.frames();
    stats.discontinuities = m_io.discontinuities();
    stats.lostFrames = m_io.lostFrames();
    stats.overflowFrames = m_io.overflowFrames();
    stats.audioSpan = m_sampleRate > 0 ? static_cast<double>(m_io.framesBeforeLast()) / m_sampleRate : 0;
    stats.hostSpan = m_io.hostSpan();
    stats.peak = m_io.topPeak();
    stats.deviceLost = deviceLost();
    stats.sampleRateChanged = rateChanged();
    if (m_filePath) {
        stats.writeErrors = m_io.writeErrors() + (m_writer ? m_writer->writeErrors() : m_writerErrors);
    }
    stats.fileFrames = m_finishedFileFrames;
    stats.clockChecked = m_io.clockChecked();
    stats.steadyTone = m_io.steadyTone();
    stats.droppedCallbacks = m_io.droppedCallbacks();
    return stats;
}

std::pair<float, float> Capture::takeChannelPeaks() noexcept
{
    const float left = m_io.takeLeftPeak();
    const float right = m_io.takeRightPeak();
    return {left, m_channels.size() > 1 ? right : left};
}

std::optional<WriterEnding> Capture::writerEnding() const
{
    return m_writer ? m_writer->ending() : std::nullopt;
}

}  // namespace vantiro
