// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/pipewire/GraphSnapshot.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vantiro {

/// Which ports of a source go to which channel of ours, as the graph stands. PipeWire's thread.
class LinkPlan {
public:
    /// A port of the source and the channel, counted from 0, of the capture that it belongs to.
    struct Entry {
        std::uint32_t outputPort = 0;
        std::size_t channel = 0;
    };

    virtual ~LinkPlan() = default;

    LinkPlan(const LinkPlan&) = delete;
    LinkPlan& operator=(const LinkPlan&) = delete;

    /// The source is in the graph.
    [[nodiscard]] virtual bool isAlive(const GraphSnapshot& graph) const = 0;
    /// The wanted links; empty as long as the source's ports are not complete.
    [[nodiscard]] virtual std::vector<Entry> entries(const GraphSnapshot& graph) const = 0;
    /// Life and links can change by time alone, so both are asked for again without a change of the graph.
    [[nodiscard]] virtual bool changesWithTime() const { return false; }

protected:
    LinkPlan() = default;
};

/// Channel for channel from one device.
class DevicePlan final : public LinkPlan {
public:
    explicit DevicePlan(std::uint64_t serial) : m_serial(serial) { }

    [[nodiscard]] bool isAlive(const GraphSnapshot& graph) const override;
    [[nodiscard]] std::vector<Entry> entries(const GraphSnapshot& graph) const override;

private:
    std::uint64_t m_serial;
};

/// The node's name begins so for all captures of ours; they do not count as use of a device.
inline constexpr QLatin1StringView captureNodePrefix("vantiro-");

/// Somebody but ourselves is connected to the node.
[[nodiscard]] bool isUsedByOthers(const GraphSnapshot& graph, std::uint32_t node);

}  // namespace vantiro
