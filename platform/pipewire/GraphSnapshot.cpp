// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/GraphSnapshot.h"

#include <algorithm>

namespace vantiro {

namespace {

    template <class Object, class Field, class Value>
    const Object* firstWith(const std::vector<Object>& objects, Field field, Value value)
    {
        const auto found = std::ranges::find(objects, value, field);
        return found == objects.end() ? nullptr : &*found;
    }

}  // namespace

const GraphNode* GraphSnapshot::nodeWithSerial(std::uint64_t serial) const
{
    return firstWith(nodes, &GraphNode::serial, serial);
}

const GraphNode* GraphSnapshot::nodeWithId(std::uint32_t id) const
{
    return firstWith(nodes, &GraphNode::id, id);
}

const GraphCard* GraphSnapshot::cardWithId(std::uint32_t id) const
{
    return firstWith(cards, &GraphCard::id, id);
}

const GraphClient* GraphSnapshot::clientWithId(std::uint32_t id) const
{
    return firstWith(clients, &GraphClient::id, id);
}

std::vector<GraphPort> GraphSnapshot::audioPorts(std::uint32_t node, bool isInput) const
{
    std::vector<GraphPort> found;
    for (const GraphPort& port : ports) {
        if (port.node == node && port.isInput == isInput && port.isAudio && !port.isMonitor) {
            found.push_back(port);
        }
    }
    std::ranges::sort(found, {}, &GraphPort::index);
    return found;
}

}  // namespace vantiro
