// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/ProgramList.h"

#include "platform/pipewire/LinkPlan.h"

#include <algorithm>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    bool isOurs(const GraphNode& node)
    {
        return node.properties.value(u"node.name"_s).startsWith(captureNodePrefix);
    }

    bool isOutputDevice(const GraphNode& node)
    {
        const QString mediaClass = node.properties.value(u"media.class"_s);
        return mediaClass.startsWith("Audio/Sink"_L1) || mediaClass.startsWith("Audio/Duplex"_L1);
    }

    bool isSounding(const GraphSnapshot& graph, const GraphNode& node)
    {
        if (!node.running || node.properties.value(u"pulse.corked"_s) == "true"_L1) {
            return false;
        }
        return std::ranges::any_of(graph.links, [&](const GraphLink& link) {
            const GraphNode* listener = graph.nodeWithId(link.inputNode);
            return link.outputNode == node.id && listener != nullptr && !isOurs(*listener);
        });
    }

}  // namespace

bool isPlaybackNode(const GraphSnapshot& graph, const GraphNode& node)
{
    if (isOurs(node)) {
        return false;
    }
    if (node.properties.value(u"media.class"_s) == "Stream/Output/Audio"_L1) {
        return true;
    }
    const GraphClient* client = graph.clientWithId(node.properties.value(u"client.id"_s).toUInt());
    const bool isJack = node.properties.value(u"client.api"_s) == "jack"_L1
        || (client != nullptr && client->properties.value(u"client.api"_s) == "jack"_L1);
    return isJack && !graph.audioPorts(node.id, false).empty();
}

std::vector<std::uint32_t> outputDeviceNodes(const GraphSnapshot& graph, const std::vector<std::uint32_t>& nodes)
{
    std::vector<std::uint32_t> devices;
    for (const GraphLink& link : graph.links) {
        const GraphNode* target = graph.nodeWithId(link.inputNode);
        if (target != nullptr && isOutputDevice(*target) && std::ranges::find(nodes, link.outputNode) != nodes.end()
            && std::ranges::find(devices, link.inputNode) == devices.end()) {
            devices.push_back(link.inputNode);
        }
    }
    return devices;
}

AudioProcess ProgramList::Program::process() const
{
    return {.pid = identity.pid, .bundleID = identity.identifier, .name = identity.name, .isPlaying = isPlaying};
}

std::vector<ProgramList::Program> ProgramList::programs(const GraphSnapshot& graph)
{
    std::vector<Program> found;
    for (const GraphNode& node : graph.nodes) {
        if (!isPlaybackNode(graph, node)) {
            continue;
        }
        const auto identity = identityOf(graph, node);
        if (!identity) {
            continue;
        }
        auto place =
            std::ranges::find_if(found, [&](const Program& program) { return program.identity.isSameAs(*identity); });
        if (place == found.end()) {
            place = found.insert(found.end(), Program{.identity = *identity, .nodes = {}});
        }
        place->nodes.push_back(node.id);
        place->isPlaying = place->isPlaying || isSounding(graph, node);
    }
    return found;
}

std::optional<ProgramList::Program> ProgramList::find(const GraphSnapshot& graph, const AudioProcess& process)
{
    for (Program& program : programs(graph)) {
        if (program.identity.pid == process.pid && program.identity.identifier == process.bundleID) {
            return std::move(program);
        }
    }
    return std::nullopt;
}

std::vector<std::uint32_t> ProgramList::nodesOf(const GraphSnapshot& graph, const ProgramIdentity& program)
{
    std::vector<std::uint32_t> nodes;
    for (const GraphNode& node : graph.nodes) {
        if (!isPlaybackNode(graph, node)) {
            continue;
        }
        if (const auto identity = identityOf(graph, node); identity && identity->isSameAs(program)) {
            nodes.push_back(node.id);
        }
    }
    return nodes;
}

bool ProgramList::isConnected(const GraphSnapshot& graph, const ProgramIdentity& program)
{
    return std::ranges::any_of(graph.clients, [&](const GraphClient& client) {
        const auto identity = m_lookup.identify(client.properties, {});
        return identity && identity->isSameAs(program);
    });
}

std::optional<ProgramIdentity> ProgramList::identityOf(const GraphSnapshot& graph, const GraphNode& node)
{
    const std::scoped_lock lock(m_mutex);
    if (const auto known = m_known.constFind(node.serial); known != m_known.cend()) {
        return *known;
    }
    const GraphClient* client = graph.clientWithId(node.properties.value(u"client.id"_s).toUInt());
    // A client whose own words are not here yet is asked again next time.
    if (client == nullptr || !client->properties.contains(u"pipewire.sec.pid"_s)) {
        return std::nullopt;
    }
    const auto identity = m_lookup.identify(client->properties, node.properties);
    m_known.insert(node.serial, identity);
    return identity;
}

}  // namespace vantiro
