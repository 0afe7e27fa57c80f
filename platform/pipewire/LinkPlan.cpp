// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/LinkPlan.h"

#include <algorithm>

namespace vantiro {

bool DevicePlan::isAlive(const GraphSnapshot& graph) const
{
    return graph.nodeWithSerial(m_serial) != nullptr;
}

std::vector<LinkPlan::Entry> DevicePlan::entries(const GraphSnapshot& graph) const
{
    const GraphNode* node = graph.nodeWithSerial(m_serial);
    if (node == nullptr) {
        return {};
    }
    const std::vector<GraphPort> ports = graph.audioPorts(node->id, false);
    // Ports appear one by one, and half a device would be recorded with its channels shifted. A sink's monitors are
    // among those promised, so they count.
    const auto present = std::ranges::count_if(
        graph.ports, [&](const GraphPort& port) { return port.node == node->id && !port.isInput; });
    if (present < static_cast<std::ptrdiff_t>(node->outputPorts)) {
        return {};
    }
    std::vector<Entry> found;
    found.reserve(ports.size());
    for (std::size_t channel = 0; channel < ports.size(); ++channel) {
        found.push_back({.outputPort = ports[channel].id, .channel = channel});
    }
    return found;
}

bool isUsedByOthers(const GraphSnapshot& graph, std::uint32_t node)
{
    return std::ranges::any_of(graph.links, [&](const GraphLink& link) {
        if (link.outputNode != node && link.inputNode != node) {
            return false;
        }
        const GraphNode* other = graph.nodeWithId(link.outputNode == node ? link.inputNode : link.outputNode);
        return other == nullptr || !other->properties.value(QStringLiteral("node.name")).startsWith(captureNodePrefix);
    });
}

}  // namespace vantiro
