// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/pipewire/GraphMirror.h"

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace vantiro {

/// One wanted connection, from an output port to an input port, by their ids in the graph.
struct PortPair {
    std::uint32_t output = 0;
    std::uint32_t input = 0;

    auto operator<=>(const PortPair&) const = default;
};

/// The links that we make ourselves, so that no session manager decides what is recorded. They end with this object.
/// PipeWire's thread or its lock.
class LinkSet {
public:
    explicit LinkSet(GraphMirror& mirror);
    ~LinkSet();

    LinkSet(const LinkSet&) = delete;
    LinkSet& operator=(const LinkSet&) = delete;

    /// Makes the links that are wanted and missing, lets go of those that are not wanted, and makes those anew that
    /// somebody else removed. Returns whether anything changed.
    bool hold(const std::vector<PortPair>& wanted);
    /// Lets go of all.
    void clear();

    [[nodiscard]] bool isEmpty() const { return m_links.empty(); }

private:
    class Link;

    GraphMirror& m_mirror;
    std::map<PortPair, std::unique_ptr<Link>> m_links;
};

}  // namespace vantiro
