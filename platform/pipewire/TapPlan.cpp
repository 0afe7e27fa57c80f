// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/TapPlan.h"

#include <algorithm>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    /// A program without a pid that can be trusted may close its last client and open the next one.
    constexpr auto absenceLimit = 5s;

    /// A session manager that moves a stream, or links one that is new, takes some moments in which it is linked to
    /// nothing. Only a stream that stays so is taken by its ports alone.
    constexpr auto unlinkedLimit = 400ms;

    FileDescriptor processDescriptor(const ProgramIdentity& program)
    {
        // The kernel makes these close-on-exec.
        return program.pidIsVerified ? FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, program.pid, 0U)))
                                     : FileDescriptor();
    }

    /// Channels of ours for channel `index` of the device.
    std::vector<std::size_t> channelsFor(std::size_t index, std::size_t deviceChannels, std::size_t ours)
    {
        if (deviceChannels == 1 && ours >= 2) {
            return {0, 1};
        }
        return index < ours ? std::vector<std::size_t>{index} : std::vector<std::size_t>{};
    }

}  // namespace

TapPlan::TapPlan(std::shared_ptr<ProgramList> programs, ProgramIdentity program, std::size_t channels)
    : m_programs(std::move(programs))
    , m_program(std::move(program))
    , m_channels(channels)
    , m_process(processDescriptor(m_program))
    , m_lastSeen(Clock::now())
    , m_made(m_lastSeen)
{ }

bool TapPlan::isAlive(const GraphSnapshot& graph) const
{
    if (!graph.connected) {
        return false;
    }
    if (m_process.isOpen()) {
        pollfd ended{.fd = m_process.get(), .events = POLLIN, .revents = 0};
        return ::poll(&ended, 1, 0) == 0;
    }
    const auto now = Clock::now();
    if (!m_programs->nodesOf(graph, m_program).empty() || m_programs->isConnected(graph, m_program)) {
        m_lastSeen = now;
    }
    return now - m_lastSeen < absenceLimit;
}

std::vector<LinkPlan::Entry> TapPlan::entries(const GraphSnapshot& graph) const
{
    const std::vector<std::uint32_t> nodes = m_programs->nodesOf(graph, m_program);
    const auto deviceNode = device(graph, nodes);
    const std::vector<GraphPort> inputs = deviceNode ? graph.audioPorts(*deviceNode, true) : std::vector<GraphPort>();
    std::vector<Entry> found;
    for (const std::uint32_t node : nodes) {
        const std::vector<Entry> wanted = entriesOf(graph, node, inputs);
        found.insert(found.end(), wanted.begin(), wanted.end());
    }
    return found;
}

std::vector<LinkPlan::Entry> TapPlan::entriesOf(
    const GraphSnapshot& graph, std::uint32_t node, const std::vector<GraphPort>& inputs) const
{
    const auto now = Clock::now();
    // What was there before us has found its place already.
    const auto appeared = now - m_made < unlinkedLimit ? now - unlinkedLimit : now;
    const auto [known, isNew] = m_nodes.try_emplace(graph.nodeWithId(node)->serial);
    Memory& memory = known->second;
    if (isNew) {
        memory.seen = appeared;
    }
    const std::vector<GraphPort> outputs = graph.audioPorts(node, false);
    if (!outputDeviceNodes(graph, {node}).empty()) {
        learnWays(memory, graph, outputs, inputs);
    } else if (!memory.wasOnDevice && now - memory.seen >= unlinkedLimit) {
        return inTurn(outputs);
    }
    std::vector<Entry> found;
    for (const auto& [place, way] : memory.ways) {
        for (const std::size_t channel : way.channels) {
            if (place < outputs.size()) {
                found.push_back({.outputPort = outputs[place].id, .channel = channel});
            }
        }
    }
    return found;
}

void TapPlan::learnWays(Memory& memory, const GraphSnapshot& graph, const std::vector<GraphPort>& outputs,
    const std::vector<GraphPort>& inputs) const
{
    const auto now = Clock::now();
    memory.wasOnDevice = true;
    std::map<std::size_t, Way> current;
    for (const GraphLink& link : graph.links) {
        const auto input = std::ranges::find(inputs, link.inputPort, &GraphPort::id);
        const auto output = std::ranges::find(outputs, link.outputPort, &GraphPort::id);
        if (input == inputs.end() || output == outputs.end()) {
            continue;
        }
        Way& way = current[static_cast<std::size_t>(output - outputs.begin())];
        way.lastLinked = now;
        const auto index = static_cast<std::size_t>(input - inputs.begin());
        for (const std::size_t channel : channelsFor(index, inputs.size(), m_channels)) {
            way.channels.push_back(channel);
        }
    }
    // A stream is unlinked and moved port by port: the last port's link must not make the others forgotten.
    for (auto& [place, way] : memory.ways) {
        if (!current.contains(place) && now - way.lastLinked < unlinkedLimit) {
            current.emplace(place, way);
        }
    }
    memory.ways = std::move(current);
}

std::vector<LinkPlan::Entry> TapPlan::inTurn(const std::vector<GraphPort>& outputs) const
{
    std::vector<Entry> found;
    found.reserve(outputs.size());
    for (std::size_t place = 0; place < outputs.size(); ++place) {
        found.push_back({.outputPort = outputs[place].id, .channel = m_channels > 1 ? place % 2 : 0});
    }
    return found;
}

std::optional<std::uint32_t> TapPlan::device(const GraphSnapshot& graph, const std::vector<std::uint32_t>& nodes) const
{
    const std::vector<std::uint32_t> devices = outputDeviceNodes(graph, nodes);
    if (devices.empty()) {
        return std::nullopt;
    }
    // Links that the session manager makes and breaks around must not turn the channels over.
    const GraphNode* current = graph.nodeWithSerial(m_deviceSerial);
    if (current != nullptr && std::ranges::find(devices, current->id) != devices.end()) {
        return current->id;
    }
    const GraphNode* first = graph.nodeWithId(devices.front());
    m_deviceSerial = first == nullptr ? 0 : first->serial;
    return devices.front();
}

}  // namespace vantiro
