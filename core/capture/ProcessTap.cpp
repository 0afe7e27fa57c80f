// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/ProcessTap.h"

#include <QUuid>

#include <cerrno>
#include <optional>

namespace vantiro {

namespace {

    constexpr std::int64_t stereo = 2;

    /// The device whose channels the tap keeps, or nothing for a mixdown.
    std::optional<AudioDevice> deviceToKeep(const std::vector<AudioDevice>& devices, ProcessTap::Scope scope)
    {
        if (devices.empty() || scope == ProcessTap::Scope::mixdown) {
            return std::nullopt;
        }
        const bool keeps =
            scope == ProcessTap::Scope::deviceStream || devices.size() >= 2 || devices.front().outputChannels > stereo;
        return keeps ? std::optional(devices.front()) : std::nullopt;
    }

}  // namespace

Result<std::unique_ptr<ProcessTap>> ProcessTap::open(AudioPlatform& audio, std::int32_t pid, Scope scope)
{
    const auto process = AudioProcesses::withPid(audio.processes(), pid);
    if (!process) {
        return captureFailure(QStringLiteral("no audio process with pid %1").arg(pid));
    }
    const auto device = deviceToKeep(audio.outputDevices(*process), scope);
    std::unique_ptr<ProcessTap> tap(new ProcessTap);
    tap->m_process = *process;
    tap->m_keepsChannels = device.has_value();
    tap->m_aggregateUID = aggregateUIDPrefix + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    auto opened =
        audio.openTap(*process, {.uid = tap->m_aggregateUID, .channels = device ? device->outputChannels : stereo});
    if (!opened) {
        return captureFailure(QStringLiteral("cannot tap %1: %2").arg(process->name).arg(opened.error()));
    }
    tap->m_tap = *std::move(opened);
    const auto aggregate = audio.device(tap->m_aggregateUID);
    if (!aggregate || aggregate->sampleRate <= 0 || aggregate->inputChannels < 1) {
        return captureFailure(QStringLiteral("the tap on %1 reports no format: %2").arg(process->name).arg(ENODEV));
    }
    tap->m_sampleRate = aggregate->sampleRate;
    tap->m_channels = aggregate->inputChannels;
    return tap;
}

Result<std::unique_ptr<ProcessTap>> ProcessTap::open(AudioPlatform& audio, const QString& bundleID)
{
    const auto process = AudioProcesses::withBundleID(audio.processes(), bundleID);
    if (!process) {
        return captureFailure(QStringLiteral("no audio process with bundle ID %1").arg(bundleID));
    }
    return open(audio, process->pid, Scope::automatic);
}

}  // namespace vantiro
