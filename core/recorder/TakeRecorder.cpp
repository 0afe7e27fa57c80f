// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/TakeRecorder.h"

#include "core/capture/TakeRepair.h"
#include "core/foundation/Files.h"
#include "core/foundation/Log.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"

#include <QDir>
#include <QFileInfo>

#include <thread>

#include <unistd.h>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;

    constexpr auto stateEvery = 500ms;
    constexpr auto firstBlockPause = 2ms;

    Result<RecorderLock> takeLock(std::chrono::milliseconds limit)
    {
        if (auto made = files::makeFolder(VantiroPaths::support()); !made) {
            return std::unexpected(made.error());
        }
        if (auto lock = RecorderLock::acquireWithin(VantiroPaths::lockFile(), limit)) {
            return *std::move(lock);
        }
        if (const auto running = RecorderStateStore::running()) {
            return captureFailure(QStringLiteral("already recording: %1").arg(running->path));
        }
        return captureFailure(
            QStringLiteral("another recorder is just starting or ending: %1 is taken").arg(VantiroPaths::lockFile()));
    }

    /// Where the take goes, with its folder made.
    Result<QString> takePath(const TakeRecorder::Request& request)
    {
        QString path = request.output.value_or(VantiroPaths::newTakeURL(request.format));
        if (request.existing == TakeRecorder::ExistingFile::refuse && QFileInfo(path).isFile()) {
            return captureFailure(
                QStringLiteral("%1 is there already; give --force to keep it under another name").arg(path));
        }
        if (auto made = files::makeFolder(QFileInfo(path).path()); !made) {
            return std::unexpected(made.error());
        }
        return path;
    }

    void repairFolder(const QString& folder)
    {
        for (const QString& path : repairTakes(folder)) {
            logLine(QStringLiteral("mended a take that was left unfinished: %1").arg(path));
        }
    }

}  // namespace

Result<std::unique_ptr<TakeRecorder>> TakeRecorder::start(
    const Request& request, const Platform& platform, TakeStorage& storage)
{
    AudioPlatform& audio = *platform.audio;
    if (!audio.isAvailable()) {
        return captureFailure(
            QStringLiteral("PipeWire is not running, so there is no audio to record. Start it and try again."));
    }
    auto lock = takeLock(request.lockLimit);
    if (!lock) {
        return std::unexpected(lock.error());
    }
    auto path = takePath(request);
    if (!path) {
        return std::unexpected(path.error());
    }
    repairFolder(QFileInfo(*path).path());
    auto source = SourceCapture::open(
        {.source = request.source, .channels = request.channels, .filePath = *path, .format = request.format}, audio,
        storage);
    if (!source) {
        return std::unexpected(source.error());
    }
    std::unique_ptr<TakeRecorder> recorder(new TakeRecorder(*std::move(lock), *std::move(source), request, platform));
    if (auto began = recorder->waitForFirstBlock(); !began) {
        recorder->m_source->capture().discard();
        return std::unexpected(began.error());
    }
    if (auto announced = recorder->announce(); !announced) {
        recorder->m_source->stop();
        return std::unexpected(announced.error());
    }
    return recorder;
}

TakeRecorder::TakeRecorder(
    RecorderLock lock, std::unique_ptr<SourceCapture> source, const Request& request, const Platform& platform)
    : m_lock(std::move(lock))
    , m_request(request)
    , m_audio(*platform.audio)
    , m_power(platform.power)
    , m_source(std::move(source))
{ }

TakeRecorder::~TakeRecorder() = default;

Result<void> TakeRecorder::waitForFirstBlock()
{
    Capture& capture = m_source->capture();
    if (auto started = capture.start(); !started) {
        return started;
    }
    const auto deadline = Clock::now() + m_request.firstBlockLimit;
    while (capture.frames() == 0) {
        if (m_request.stopRequested && m_request.stopRequested()) {
            return captureFailure(QStringLiteral("stopped before the take began"));
        }
        if (capture.deviceLost()) {
            return captureFailure(QStringLiteral("%1 was disconnected before the take began").arg(m_source->name()));
        }
        if (capture.rateChanged()) {
            return captureFailure(
                QStringLiteral("the sample rate of %1 changed before the take began").arg(m_source->name()));
        }
        if (Clock::now() >= deadline) {
            return captureFailure(QStringLiteral("%1 sent no audio, so no take was started").arg(m_source->name()));
        }
        std::this_thread::sleep_for(firstBlockPause);
    }
    return {};
}

Result<void> TakeRecorder::announce()
{
    const Capture& capture = m_source->capture();
    m_state = RecorderState::started({.pid = ::getpid(),
        .path = *capture.filePath(),
        .deviceUID = m_request.source.descriptor(),
        .deviceName = m_source->name(),
        .channels = capture.channels(),
        .format = m_request.format,
        .startedAt = QDateTime::currentDateTimeUtc(),
        .stats = capture.stats()});
    m_stateWritten = Clock::now();
    m_lastAudio = m_stateWritten;
    if (m_power) {
        m_protection.emplace(QStringLiteral("A take of %1 is being recorded").arg(m_source->name()), m_power);
    }
    return RecorderStateStore::write(m_state, VantiroPaths::stateFile());
}

std::optional<TakeEnding> TakeRecorder::tick()
{
    if (const auto ending = reasonToEnd()) {
        return ending;
    }
    if (Clock::now() - m_stateWritten >= stateEvery) {
        refreshState();
    }
    return std::nullopt;
}

std::optional<TakeEnding> TakeRecorder::reasonToEnd()
{
    const Capture& capture = m_source->capture();
    if (const auto ending = capture.writerEnding()) {
        switch (*ending) {
        case WriterEnding::diskFull:
            return TakeEnding::diskFull;
        case WriterEnding::wavLimit:
            return TakeEnding::wavLimit;
        case WriterEnding::writeFailed:
            return TakeEnding::writeFailed;
        }
    }
    if (capture.deviceLost()) {
        // A program that is gone while the audio service still answers has quit; without it, who knows.
        const bool isProgram = m_request.source.kind == SourceRef::Kind::app;
        return isProgram && m_audio.isAvailable() ? TakeEnding::sourceQuit : TakeEnding::deviceLost;
    }
    if (capture.rateChanged()) {
        return TakeEnding::rateChanged;
    }
    const std::int64_t frames = capture.frames();
    if (frames != m_framesSeen) {
        m_framesSeen = frames;
        m_lastAudio = Clock::now();
    }
    return Clock::now() - m_lastAudio >= m_request.stallLimit ? std::optional(TakeEnding::inputStalled) : std::nullopt;
}

void TakeRecorder::refreshState()
{
    m_stateWritten = Clock::now();
    m_state.stats = m_source->capture().stats();
    if (auto written = RecorderStateStore::write(m_state, VantiroPaths::stateFile()); !written) {
        logLine(QStringLiteral("the state could not be written: %1").arg(errorText(written.error())));
    }
}

TakeRecorder::Account TakeRecorder::finish(TakeEnding ending)
{
    m_state.stats = m_source->stop();
    m_protection.reset();
    m_state.endedBecause = endedBecause(ending);
    if (auto written = RecorderStateStore::write(m_state, VantiroPaths::lastTakeFile(), files::Durability::lasting);
        !written) {
        logLine(QStringLiteral("the last take's record could not be written: %1").arg(errorText(written.error())));
    }
    RecorderStateStore::clear();
    return {.state = m_state, .ending = ending};
}

}  // namespace vantiro
