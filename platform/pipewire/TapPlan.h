// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/FileDescriptor.h"
#include "platform/pipewire/LinkPlan.h"
#include "platform/pipewire/ProgramList.h"

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace vantiro {

/// All that a program plays, beside its own way to the speakers: what it sends into channel k of its first device goes
/// to our channel k, and several streams into one channel are summed. A mono device feeds both sides. What is linked to
/// no device, and never was, goes left and right in turn; one that loses its device keeps its channels, so that a cue
/// is not mixed into the set when an interface is unplugged. Streams that come later are found as they come.
class TapPlan final : public LinkPlan {
public:
    TapPlan(std::shared_ptr<ProgramList> programs, ProgramIdentity program, std::size_t channels);

    /// The process lives; where nobody vouches for its pid, some client of the program was there within 5 seconds.
    [[nodiscard]] bool isAlive(const GraphSnapshot& graph) const override;
    [[nodiscard]] std::vector<Entry> entries(const GraphSnapshot& graph) const override;
    [[nodiscard]] bool changesWithTime() const override { return true; }

private:
    using Clock = std::chrono::steady_clock;

    /// Where one output port of a node goes.
    struct Way {
        std::vector<std::size_t> channels;
        Clock::time_point lastLinked;
    };

    /// What one playback node was seen to do.
    struct Memory {
        Clock::time_point seen;           ///< When it appeared.
        std::map<std::size_t, Way> ways;  ///< By the port's place among the node's output ports.
        bool wasOnDevice = false;
    };

    [[nodiscard]] std::vector<Entry> entriesOf(
        const GraphSnapshot& graph, std::uint32_t node, const std::vector<GraphPort>& inputs) const;
    void learnWays(Memory& memory, const GraphSnapshot& graph, const std::vector<GraphPort>& outputs,
        const std::vector<GraphPort>& inputs) const;
    [[nodiscard]] std::vector<Entry> inTurn(const std::vector<GraphPort>& outputs) const;
    [[nodiscard]] std::optional<std::uint32_t> device(
        const GraphSnapshot& graph, const std::vector<std::uint32_t>& nodes) const;

    std::shared_ptr<ProgramList> m_programs;
    ProgramIdentity m_program;
    std::size_t m_channels;
    FileDescriptor m_process;  ///< Readable once the process has ended.
    // The plan is asked again and again, on one thread, and remembers what it saw.
    mutable std::uint64_t m_deviceSerial = 0;         ///< The device that counts, as long as the program plays to it.
    mutable std::map<std::uint64_t, Memory> m_nodes;  ///< By serial.
    mutable Clock::time_point m_lastSeen;
    Clock::time_point m_made;
};

}  // namespace vantiro
