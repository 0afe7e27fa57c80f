// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/StreamLinks.h"

#include <utility>

namespace vantiro::test {

namespace {

    QString nameOf(const GraphNode& node)
    {
        return node.properties.value(QStringLiteral("node.name"));
    }

}  // namespace

std::vector<LinkPlan::Entry> StreamPlan::entries(const GraphSnapshot& graph) const
{
    std::vector<Entry> found;
    for (const GraphNode& node : graph.nodes) {
        if (m_names.contains(nameOf(node))) {
            const std::vector<Entry> ports = DevicePlan(node.serial).entries(graph);
            found.insert(found.end(), ports.begin(), ports.end());
        }
    }
    return found;
}

StreamLinks::StreamLinks(QStringList names, QString sink)
    : m_plan(std::move(names))
    , m_sink(std::move(sink))
    , m_links(m_mirror)
{
    const LoopLock lock(m_mirror.loop());
    m_mirror.add(*this);
    graphChanged(m_mirror.current());
}

StreamLinks::~StreamLinks()
{
    const LoopLock lock(m_mirror.loop());
    m_mirror.remove(*this);
    m_links.clear();
}

void StreamLinks::graphChanged(const GraphSnapshot& graph)
{
    std::vector<GraphPort> inputs;
    for (const GraphNode& node : graph.nodes) {
        if (nameOf(node) == m_sink) {
            inputs = graph.audioPorts(node.id, true);
        }
    }
    std::vector<PortPair> wanted;
    for (const LinkPlan::Entry& entry : m_plan.entries(graph)) {
        if (entry.channel < inputs.size()) {
            wanted.push_back({.output = entry.outputPort, .input = inputs[entry.channel].id});
        }
    }
    m_links.hold(wanted);
}

}  // namespace vantiro::test
