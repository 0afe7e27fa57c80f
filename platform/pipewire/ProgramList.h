// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/sources/AudioDevice.h"
#include "core/sources/AudioProcess.h"
#include "platform/pipewire/GraphSnapshot.h"
#include "platform/pipewire/ProgramIdentity.h"

#include <QHash>

#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace vantiro {

/// The programs that play into a graph, and what of them is where. Any thread.
class ProgramList {
public:
    /// A program with its playback nodes, in the order in which they appeared.
    struct Program {
        ProgramIdentity identity;
        std::vector<std::uint32_t> nodes;
        bool isPlaying = false;

        [[nodiscard]] AudioProcess process() const;
    };

    ProgramList() = default;
    explicit ProgramList(ProgramLookup lookup) : m_lookup(std::move(lookup)) { }

    /// All programs that have a playback node, in the order in which they came.
    [[nodiscard]] std::vector<Program> programs(const GraphSnapshot& graph);
    /// The program that a record speaks of.
    [[nodiscard]] std::optional<Program> find(const GraphSnapshot& graph, const AudioProcess& process);
    /// The playback nodes of one program.
    [[nodiscard]] std::vector<std::uint32_t> nodesOf(const GraphSnapshot& graph, const ProgramIdentity& program);
    /// Some client of the graph is that program's.
    [[nodiscard]] bool isConnected(const GraphSnapshot& graph, const ProgramIdentity& program);

private:
    [[nodiscard]] std::optional<ProgramIdentity> identityOf(const GraphSnapshot& graph, const GraphNode& node);

    ProgramLookup m_lookup;
    std::mutex m_mutex;
    /// By the serial of the node: who somebody is does not change, and asking reads files.
    QHash<quint64, std::optional<ProgramIdentity>> m_known;
};

/// The node is where a program's sound comes out.
[[nodiscard]] bool isPlaybackNode(const GraphSnapshot& graph, const GraphNode& node);

/// The nodes of devices that these nodes are linked to, in the order in which the links were made.
[[nodiscard]] std::vector<std::uint32_t> outputDeviceNodes(
    const GraphSnapshot& graph, const std::vector<std::uint32_t>& nodes);

}  // namespace vantiro
