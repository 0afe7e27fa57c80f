// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/SourceCapture.h"

namespace vantiro {

namespace {

    std::optional<AudioProcess> findProcess(const SourceCapture::Options& options, AudioPlatform& audio)
    {
        const std::vector<AudioProcess> processes = audio.processes();
        if (options.pid) {
            if (auto process = AudioProcesses::withPid(processes, *options.pid)) {
                return process;
            }
        }
        return AudioProcesses::withID(processes, options.source.id);
    }

    /// The tap for an application, none for a device.
    Result<std::unique_ptr<ProcessTap>> openTap(const SourceCapture::Options& options, AudioPlatform& audio)
    {
        if (options.source.kind == SourceRef::Kind::device) {
            return nullptr;
        }
        const auto process = findProcess(options, audio);
        if (!process) {
            return captureFailure(QStringLiteral("%1 is not running").arg(options.source.id));
        }
        return ProcessTap::open(audio, process->pid, ProcessTap::Scope::automatic);
    }

}  // namespace

Result<std::unique_ptr<SourceCapture>> SourceCapture::open(
    const Options& options, AudioPlatform& audio, TakeStorage& storage)
{
    auto tap = openTap(options, audio);
    if (!tap) {
        return std::unexpected(tap.error());
    }
    auto capture = Capture::open({.deviceUID = *tap ? (*tap)->aggregateUID() : options.source.id,
                                     .channels = options.channels,
                                     .filePath = options.filePath,
                                     .format = options.format},
        audio, storage);
    if (!capture) {
        return std::unexpected(capture.error());
    }
    return std::unique_ptr<SourceCapture>(new SourceCapture(*std::move(tap), *std::move(capture)));
}

SourceCapture::SourceCapture(std::unique_ptr<ProcessTap> tap, std::unique_ptr<Capture> capture)
    : m_tap(std::move(tap))
    , m_capture(std::move(capture))
    , m_name(m_tap ? m_tap->process().name : m_capture->device().name)
{ }

CaptureStats SourceCapture::stop()
{
    const CaptureStats stats = m_capture->stop();
    if (m_tap) {
        m_tap->close();
    }
    return stats;
}

}  // namespace vantiro
