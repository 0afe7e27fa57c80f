// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/PipeWireAudio.h"

#include "platform/pipewire/DeviceList.h"
#include "platform/pipewire/DeviceWatch.h"
#include "platform/pipewire/FilterStream.h"
#include "platform/pipewire/GraphMirror.h"

#include <algorithm>
#include <cerrno>

namespace vantiro {

namespace {

    std::optional<DeviceList::Entry> entryFor(const GraphSnapshot& graph, const QString& uid)
    {
        for (DeviceList::Entry& entry : DeviceList::entries(graph)) {
            if (entry.device.uid == uid) {
                return std::move(entry);
            }
        }
        return std::nullopt;
    }

    /// Forcing a rate stops every stream of the device for a moment, so it is done only where nobody else notices.
    std::optional<int> rateToForce(const GraphSnapshot& graph, const DeviceList::Entry& entry, CapturePurpose purpose)
    {
        const GraphNode* node = graph.nodeWithSerial(entry.serial);
        const double rate = entry.device.sampleRate;
        if (purpose != CapturePurpose::take || node == nullptr || rate <= 0 || rate == graph.graphRate
            || isUsedByOthers(graph, node->id)) {
            return std::nullopt;
        }
        return static_cast<int>(rate);
    }

}  // namespace

PipeWireAudio::PipeWireAudio() : m_mirror(std::make_shared<GraphMirror>()) { }

PipeWireAudio::~PipeWireAudio() = default;

bool PipeWireAudio::isAvailable()
{
    return m_mirror->snapshot()->connected;
}

std::vector<AudioDevice> PipeWireAudio::devices()
{
    std::vector<AudioDevice> devices;
    for (DeviceList::Entry& entry : DeviceList::entries(*m_mirror->snapshot())) {
        devices.push_back(std::move(entry.device));
    }
    return devices;
}

std::optional<AudioDevice> PipeWireAudio::device(const QString& uid)
{
    auto entry = entryFor(*m_mirror->snapshot(), uid);
    return entry ? std::optional(std::move(entry->device)) : std::nullopt;
}

std::optional<QString> PipeWireAudio::defaultInputUID()
{
    const auto graph = m_mirror->snapshot();
    const QString uid = DeviceList::uidFromName(graph->defaultSource);
    return !uid.isEmpty() && entryFor(*graph, uid) ? std::optional(uid) : std::nullopt;
}

std::vector<std::int64_t> PipeWireAudio::inputBuffers(const QString& uid)
{
    const std::optional<AudioDevice> found = device(uid);
    return std::vector<std::int64_t>(found ? static_cast<std::size_t>(found->inputChannels) : 0, 1);
}

std::expected<std::unique_ptr<CaptureStream>, int> PipeWireAudio::openCapture(
    const QString& uid, std::span<const std::int64_t> channels, CapturePurpose purpose)
{
    const auto graph = m_mirror->snapshot();
    const std::optional<DeviceList::Entry> entry = entryFor(*graph, uid);
    if (!entry) {
        return std::unexpected(ENODEV);
    }
    FilterStream::Options options;
    options.nodeName = purpose == CapturePurpose::take ? "vantiro-recorder" : "vantiro-meter";
    options.sourceChannels = static_cast<std::size_t>(entry->device.inputChannels);
    for (const std::int64_t channel : channels) {
        const auto index = static_cast<std::size_t>(channel - 1);
        if (channel < 1 || index >= options.sourceChannels) {
            return std::unexpected(EINVAL);
        }
        // A channel that is wanted twice is fetched once.
        if (std::ranges::find(options.channels, index) == options.channels.end()) {
            options.channels.push_back(index);
        }
    }
    options.nominalRate = entry->device.sampleRate;
    options.forcedRate = rateToForce(*graph, *entry, purpose);
    return FilterStream::open(m_mirror, std::make_unique<DevicePlan>(entry->serial), options);
}

std::unique_ptr<HardwareWatch> PipeWireAudio::watch(std::function<void()> onChange)
{
    return std::make_unique<DeviceWatch>(m_mirror, std::move(onChange));
}

}  // namespace vantiro
