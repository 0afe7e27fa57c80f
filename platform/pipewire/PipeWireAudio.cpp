// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/PipeWireAudio.h"

#include "platform/pipewire/DeviceList.h"
#include "platform/pipewire/DeviceWatch.h"
#include "platform/pipewire/FilterStream.h"
#include "platform/pipewire/GraphMirror.h"
#include "platform/pipewire/PlaybackOutput.h"
#include "platform/pipewire/ProgramList.h"
#include "platform/pipewire/TapPlan.h"
#include "platform/pipewire/TapRegister.h"

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

    /// How a stream names the node that it wants. A name still counts when a device was away and came back; a serial
    /// tells nodes of one name apart.
    std::string targetFor(const GraphSnapshot& graph, const GraphNode& node)
    {
        const QString key = QStringLiteral("node.name");
        const QString name = node.properties.value(key);
        const auto bearers = std::ranges::count_if(
            graph.nodes, [&](const GraphNode& other) { return other.properties.value(key) == name; });
        return bearers == 1 ? name.toStdString() : std::to_string(node.serial);
    }

}  // namespace

PipeWireAudio::PipeWireAudio(bool asksForRealTime)
    : m_mirror(std::make_shared<GraphMirror>(asksForRealTime))
    , m_programs(std::make_shared<ProgramList>())
    , m_taps(std::make_shared<TapRegister>())
{ }

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
    if (const auto tap = m_taps->find(uid)) {
        return tap->device;
    }
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

std::optional<TakeRate> PipeWireAudio::takeRate(const QString& uid)
{
    const auto graph = m_mirror->snapshot();
    const auto entry = entryFor(*graph, uid);
    const GraphNode* node = entry ? graph->nodeWithSerial(entry->serial) : nullptr;
    if (node == nullptr) {
        return std::nullopt;
    }
    if (!isUsedByOthers(*graph, node->id)) {
        return TakeRate{.hertz = entry->device.sampleRate};
    }
    // A device that knows one rate only keeps it, whatever the graph around it runs at.
    const bool tellsGraphRate = node->running && node->format && !node->fixedFormat;
    return TakeRate{.hertz = tellsGraphRate ? *node->format : graph->graphRate, .setByOthers = true};
}

std::expected<std::unique_ptr<CaptureStream>, int> PipeWireAudio::openCapture(
    const QString& uid, std::span<const std::int64_t> channels, CapturePurpose purpose)
{
    const auto graph = m_mirror->snapshot();
    const auto tap = m_taps->find(uid);
    const std::optional<DeviceList::Entry> entry = tap ? std::nullopt : entryFor(*graph, uid);
    if (!tap && !entry) {
        return std::unexpected(ENODEV);
    }
    const AudioDevice& source = tap ? tap->device : entry->device;
    FilterStream::Options options;
    options.sourceChannels = static_cast<std::size_t>(source.inputChannels);
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
    options.nominalRate = source.sampleRate;
    if (tap) {
        options.nodeName = uid.toStdString();
        options.absence = FilterStream::Absence::silence;
        return FilterStream::open(
            m_mirror, std::make_unique<TapPlan>(m_programs, tap->program, options.sourceChannels), options);
    }
    options.nodeName = purpose == CapturePurpose::take ? "vantiro-recorder" : "vantiro-meter";
    options.forcedRate = rateToForce(*graph, *entry, purpose);
    return FilterStream::open(m_mirror, std::make_unique<DevicePlan>(entry->serial), options);
}

std::vector<AudioProcess> PipeWireAudio::processes()
{
    std::vector<AudioProcess> processes;
    for (const ProgramList::Program& program : m_programs->programs(*m_mirror->snapshot())) {
        processes.push_back(program.process());
    }
    AudioProcesses::sort(processes);
    return processes;
}

std::vector<AudioDevice> PipeWireAudio::outputDevices(const AudioProcess& process)
{
    const auto graph = m_mirror->snapshot();
    const auto program = m_programs->find(*graph, process);
    std::vector<AudioDevice> devices;
    if (!program) {
        return devices;
    }
    const std::vector<DeviceList::Entry> entries = DeviceList::entries(*graph);
    for (const std::uint32_t id : outputDeviceNodes(*graph, program->nodes)) {
        const GraphNode* node = graph->nodeWithId(id);
        const auto entry = std::ranges::find(entries, node->serial, &DeviceList::Entry::serial);
        if (entry != entries.end()) {
            devices.push_back(entry->device);
        }
    }
    return devices;
}

std::expected<std::unique_ptr<AudioTap>, int> PipeWireAudio::openTap(
    const AudioProcess& process, const AudioTap::Request& request)
{
    const auto graph = m_mirror->snapshot();
    const auto program = m_programs->find(*graph, process);
    if (!program) {
        return std::unexpected(ESRCH);
    }
    const std::vector<AudioDevice> devices = outputDevices(process);
    return m_taps->add({.program = program->identity,
        .device = {.uid = request.uid,
            .name = QStringLiteral("Vantiro: %1").arg(process.name),
            .transport = QStringLiteral("virtual"),
            .inputChannels = request.channels,
            .sampleRate = devices.empty() ? graph->graphRate : devices.front().sampleRate,
            .inputTerminal = QStringLiteral("unknown")}});
}

std::expected<std::unique_ptr<PlaybackStream>, int> PipeWireAudio::openPlayback(
    const PlaybackStream::Request& request, PlaybackSource& source)
{
    const auto graph = m_mirror->snapshot();
    const auto entry = request.output.isEmpty() ? std::nullopt : entryFor(*graph, request.output);
    const GraphNode* node = entry ? graph->nodeWithSerial(entry->serial) : nullptr;
    // An output that is not there takes the sound over when it comes.
    const std::string target =
        node == nullptr ? DeviceList::nameFromUid(request.output).toStdString() : targetFor(*graph, *node);
    return PlaybackOutput::open(m_mirror, request, target, source);
}

std::unique_ptr<HardwareWatch> PipeWireAudio::watch(std::function<void()> onChange)
{
    return std::make_unique<DeviceWatch>(m_mirror, m_programs, std::move(onChange));
}

}  // namespace vantiro
