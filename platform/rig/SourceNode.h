// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/rig/RigClock.h"
#include "platform/rig/SourcePort.h"
#include "platform/rig/VirtualDevice.h"

#include <pipewire/pipewire.h>
#include <spa/node/io.h>
#include <spa/node/node.h>

#include <array>
#include <atomic>
#include <memory>
#include <vector>

namespace vantiro {

/// The node of a virtual device as PipeWire sees it: only output ports of mono float, a clock, no converter.
///
/// Two threads meet here. The loop thread (with its lock held) makes the object, negotiates and gives orders; the data
/// thread runs the cycles and owns every member below "Data thread", which the loop thread changes only by onData().
class SourceNode {
public:
    SourceNode(pw_loop* dataLoop, const VirtualDeviceOptions& options);
    /// After the graph let go of the node.
    ~SourceNode();

    SourceNode(const SourceNode&) = delete;
    SourceNode& operator=(const SourceNode&) = delete;

    /// What is exported.
    [[nodiscard]] spa_node* interface() { return &m_node; }

    void jumpPosition(std::int64_t frames);
    void overrun(std::int64_t frames);
    void setRate(int sampleRate);
    void setQuantum(int frames);
    void setClockId(std::uint32_t id);
    void hang();
    void resumeCycles(VirtualDevice::Resume how);
    /// No cycle runs from here on until the graph starts the node again.
    void stopCycles();

    /// Any thread.
    [[nodiscard]] std::int64_t contentPosition() const { return m_content.load(std::memory_order_relaxed); }
    /// Any thread.
    [[nodiscard]] std::int64_t cycles() const { return m_cycles.load(std::memory_order_relaxed); }

private:
    static const spa_node_methods methods;

    template <class Work>
    void onData(Work&& work);

    int addListener(spa_hook* listener, const spa_node_events* events, void* data);
    int setIo(std::uint32_t id, void* area, std::size_t size);
    int sendCommand(const spa_command* command);
    int portSetParam(SourcePort& port, std::uint32_t id, const spa_pod* param);
    int portSetIo(SourcePort& port, std::uint32_t id, void* area, std::size_t size);
    int process();

    [[nodiscard]] SourcePort* findPort(spa_direction direction, std::uint32_t port);
    void emitInfo();
    template <class Build>
    void emitParams(
        int sequence, std::uint32_t id, std::uint32_t start, std::uint32_t count, const spa_pod* filter, Build&& build);
    [[nodiscard]] spa_pod* nodeFormat(std::uint32_t id, spa_pod_builder& builder) const;

    void start();
    void tick();
    void runCycle();
    void renderPorts(int frames, std::int64_t content);
    void armTimer(std::int64_t nsec);
    [[nodiscard]] bool isFollowing() const;

    spa_node m_node{};
    spa_hook_list m_hooks{};
    spa_callbacks m_callbacks{};
    pw_loop* m_dataLoop;
    spa_source* m_timer = nullptr;
    bool m_hasOwnClock;
    int m_sampleRate;
    std::array<spa_param_info, 2> m_params{};
    std::vector<std::unique_ptr<SourcePort>> m_ports;

    // Data thread.
    VirtualDeviceOptions::Render m_render;
    RigClock m_clock;
    spa_io_clock* m_clockArea = nullptr;
    spa_io_position* m_positionArea = nullptr;
    std::vector<float*> m_channels;
    std::vector<float> m_unheard;
    std::uint32_t m_ownClockId = 0;
    std::uint32_t m_foreignClockId = 0;
    std::int64_t m_triggeredNsec = 0;
    std::int64_t m_patienceNsec = 0;
    bool m_isStarted = false;
    bool m_isTicking = false;
    bool m_isHung = false;
    bool m_isAwaited = false;
    bool m_isDue = false;
    bool m_isRecovering = false;

    std::atomic<std::int64_t> m_content = 0;
    std::atomic<std::int64_t> m_cycles = 0;
};

}  // namespace vantiro
