// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/SourceNode.h"

#include <spa/node/utils.h>
#include <spa/param/audio/format-utils.h>
#include <spa/pod/filter.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

namespace vantiro {

namespace {

    constexpr std::int64_t nsecPerSecond = RigClock::nsecPerSecond;
    // How long a cycle waits for the one before it to be heard by everybody.
    constexpr std::int64_t patienceNsec = nsecPerSecond / 5;
    // The same for the first cycle after a start: the daemon may not have noted the start yet and overhear it.
    constexpr std::int64_t startPatienceNsec = nsecPerSecond / 20;
    // What a clock is behind after the computer slept; nobody wants that delivered.
    constexpr std::int64_t catchUpLimitNsec = 10 * nsecPerSecond;

    std::int64_t monotonicNsec()
    {
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<std::int64_t>(now.tv_sec) * nsecPerSecond + now.tv_nsec;
    }

    bool isStream(const VirtualDeviceOptions& options)
    {
        for (const auto& [name, value] : options.properties) {
            if (name == QLatin1StringView(PW_KEY_MEDIA_CLASS)) {
                return value.startsWith(QLatin1StringView("Stream/"));
            }
        }
        return false;
    }

    SourceNode* self(void* object)
    {
        return static_cast<SourceNode*>(object);
    }

}  // namespace

const spa_node_methods SourceNode::methods = {
    .version = SPA_VERSION_NODE_METHODS,
    .add_listener = [](void* object, spa_hook* listener, const spa_node_events* events,
                        void* data) { return self(object)->addListener(listener, events, data); },
    .set_callbacks =
        [](void* object, const spa_node_callbacks* callbacks, void* data) {
            self(object)->onData([&] { self(object)->m_callbacks = SPA_CALLBACKS_INIT(callbacks, data); });
            return 0;
        },
    .sync =
        [](void* object, int sequence) {
            spa_node_emit_result(&self(object)->m_hooks, sequence, 0, 0, nullptr);
            return 0;
        },
    .enum_params =
        [](void* object, int sequence, std::uint32_t id, std::uint32_t start, std::uint32_t count,
            const spa_pod* filter) {
            self(object)->emitParams(
                sequence, id, start, count, filter, [object, id](std::uint32_t index, spa_pod_builder& builder) {
                    return index == 0 ? self(object)->nodeFormat(id, builder) : nullptr;
                });
            return 0;
        },
    .set_param = [](void*, std::uint32_t, std::uint32_t, const spa_pod*) { return -ENOTSUP; },
    .set_io = [](void* object, std::uint32_t id, void* area,
                  std::size_t size) { return self(object)->setIo(id, area, size); },
    .send_command = [](void* object, const spa_command* command) { return self(object)->sendCommand(command); },
    .add_port = [](void*, spa_direction, std::uint32_t, const spa_dict*) { return -ENOTSUP; },
    .remove_port = [](void*, spa_direction, std::uint32_t) { return -ENOTSUP; },
    .port_enum_params =
        [](void* object, int sequence, spa_direction direction, std::uint32_t port, std::uint32_t id,
            std::uint32_t start, std::uint32_t count, const spa_pod* filter) {
            const SourcePort* found = self(object)->findPort(direction, port);
            if (found == nullptr) {
                return -EINVAL;
            }
            self(object)->emitParams(
                sequence, id, start, count, filter, [found, id](std::uint32_t index, spa_pod_builder& builder) {
                    return found->param(id, index, builder);
                });
            return 0;
        },
    .port_set_param =
        [](void* object, spa_direction direction, std::uint32_t port, std::uint32_t id, std::uint32_t,
            const spa_pod* param) {
            SourcePort* found = self(object)->findPort(direction, port);
            return found != nullptr ? self(object)->portSetParam(*found, id, param) : -EINVAL;
        },
    .port_use_buffers =
        [](void* object, spa_direction direction, std::uint32_t port, std::uint32_t, spa_buffer** buffers,
            std::uint32_t count) {
            SourcePort* found = self(object)->findPort(direction, port);
            int result = -EINVAL;
            if (found != nullptr) {
                self(object)->onData([&] { result = found->useBuffers(buffers, count); });
            }
            return result;
        },
    .port_set_io =
        [](void* object, spa_direction direction, std::uint32_t port, std::uint32_t id, void* area, std::size_t size) {
            SourcePort* found = self(object)->findPort(direction, port);
            return found != nullptr ? self(object)->portSetIo(*found, id, area, size) : -EINVAL;
        },
    .port_reuse_buffer = [](void*, std::uint32_t, std::uint32_t) { return 0; },
    .process = [](void* object) { return self(object)->process(); },
};

SourceNode::SourceNode(pw_loop* dataLoop, const VirtualDeviceOptions& options)
    : m_dataLoop(dataLoop)
    , m_hasOwnClock(options.clock == VirtualDeviceOptions::Clock::own)
    , m_sampleRate(options.sampleRate)
    , m_render(options.render)
    , m_clock(options.sampleRate, options.quantum)
    , m_unheard(static_cast<std::size_t>(maxCycleFrames) * static_cast<std::size_t>(options.channels))
{
    spa_hook_list_init(&m_hooks);
    m_node.iface = SPA_INTERFACE_INIT(SPA_TYPE_INTERFACE_Node, SPA_VERSION_NODE, &methods, this);
    m_params[0] = SPA_PARAM_INFO(SPA_PARAM_EnumFormat, SPA_PARAM_INFO_READ);
    m_params[1] = SPA_PARAM_INFO(SPA_PARAM_Format, SPA_PARAM_INFO_READ);
    const auto kind = isStream(options) ? SourcePort::Kind::stream : SourcePort::Kind::jack;
    for (int channel = 0; channel < options.channels; ++channel) {
        m_ports.push_back(std::make_unique<SourcePort>(static_cast<std::uint32_t>(channel), options.channels, kind));
    }
    m_channels.resize(m_ports.size());
    onData([this] {
        m_timer = pw_loop_add_timer(m_dataLoop, [](void* object, std::uint64_t) { self(object)->tick(); }, this);
    });
}

SourceNode::~SourceNode()
{
    onData([this] { pw_loop_destroy_source(m_dataLoop, m_timer); });
    spa_hook_list_clean(&m_hooks);
}

template <class Work>
void SourceNode::onData(Work&& work)
{
    using Callable = std::remove_reference_t<Work>;
    pw_loop_invoke(
        m_dataLoop,
        [](spa_loop*, bool, std::uint32_t, const void*, std::size_t, void* callable) {
            (*static_cast<Callable*>(callable))();
            return 0;
        },
        0, nullptr, 0, true, &work);
}

int SourceNode::addListener(spa_hook* listener, const spa_node_events* events, void* data)
{
    spa_hook_list save;
    // Only the new listener hears the first description.
    spa_hook_list_isolate(&m_hooks, &save, listener, events, data);
    emitInfo();
    for (const auto& port : m_ports) {
        port->emitInfo(m_hooks, true);
    }
    spa_hook_list_join(&m_hooks, &save);
    return 0;
}

void SourceNode::emitInfo()
{
    spa_node_info info = SPA_NODE_INFO_INIT();
    info.change_mask = SPA_NODE_CHANGE_MASK_FLAGS | SPA_NODE_CHANGE_MASK_PARAMS;
    info.max_output_ports = static_cast<std::uint32_t>(m_ports.size());
    info.flags = SPA_NODE_FLAG_RT;
    info.params = m_params.data();
    info.n_params = static_cast<std::uint32_t>(m_params.size());
    spa_node_emit_info(&m_hooks, &info);
}

template <class Build>
void SourceNode::emitParams(
    int sequence, std::uint32_t id, std::uint32_t start, std::uint32_t count, const spa_pod* filter, Build&& build)
{
    std::uint32_t emitted = 0;
    for (std::uint32_t index = start; emitted < count; ++index) {
        std::array<std::uint8_t, 1024> memory{};
        std::array<std::uint8_t, 1024> filteredMemory{};
        spa_pod_builder builder{};
        spa_pod_builder filtered{};
        spa_pod_builder_init(&builder, memory.data(), static_cast<std::uint32_t>(memory.size()));
        spa_pod_builder_init(&filtered, filteredMemory.data(), static_cast<std::uint32_t>(filteredMemory.size()));
        spa_pod* param = build(index, builder);
        if (param == nullptr) {
            break;
        }
        spa_result_node_params result{.id = id, .index = index, .next = index + 1, .param = nullptr};
        if (spa_pod_filter(&filtered, &result.param, param, filter) >= 0) {
            spa_node_emit_result(&m_hooks, sequence, 0, SPA_RESULT_TYPE_NODE_PARAMS, &result);
            ++emitted;
        }
    }
}

spa_pod* SourceNode::nodeFormat(std::uint32_t id, spa_pod_builder& builder) const
{
    if (id != SPA_PARAM_EnumFormat && id != SPA_PARAM_Format) {
        return nullptr;
    }
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32P;
    format.rate = static_cast<std::uint32_t>(m_sampleRate);
    format.channels = static_cast<std::uint32_t>(m_ports.size());
    const auto aux = static_cast<std::uint32_t>(SPA_AUDIO_CHANNEL_AUX0);
    for (std::uint32_t channel = 0; channel < format.channels; ++channel) {
        format.position[channel] = aux + channel;
    }
    if (format.channels == 1) {
        format.position[0] = SPA_AUDIO_CHANNEL_MONO;
    } else if (format.channels == 2) {
        format.position[0] = SPA_AUDIO_CHANNEL_FL;
        format.position[1] = SPA_AUDIO_CHANNEL_FR;
    }
    return spa_format_audio_raw_build(&builder, id, &format);
}

SourcePort* SourceNode::findPort(spa_direction direction, std::uint32_t port)
{
    return direction == SPA_DIRECTION_OUTPUT && port < m_ports.size() ? m_ports[port].get() : nullptr;
}

int SourceNode::portSetParam(SourcePort& port, std::uint32_t id, const spa_pod* param)
{
    if (id != SPA_PARAM_Format) {
        return -ENOENT;
    }
    int result = 0;
    onData([&] {
        result = port.setFormat(param);
        if (param == nullptr) {
            static_cast<void>(port.useBuffers(nullptr, 0));
        }
    });
    if (result == 0) {
        port.emitInfo(m_hooks, false);
    }
    return result;
}

int SourceNode::portSetIo(SourcePort& port, std::uint32_t id, void* area, std::size_t size)
{
    if (id != SPA_IO_Buffers) {
        return -ENOENT;
    }
    if (area != nullptr && size < sizeof(spa_io_buffers)) {
        return -EINVAL;
    }
    onData([&] { port.useArea(static_cast<spa_io_buffers*>(area)); });
    return 0;
}

int SourceNode::setIo(std::uint32_t id, void* area, std::size_t size)
{
    if (id != SPA_IO_Clock && id != SPA_IO_Position) {
        return -ENOENT;
    }
    if (area != nullptr && size < (id == SPA_IO_Clock ? sizeof(spa_io_clock) : sizeof(spa_io_position))) {
        return -EINVAL;
    }
    onData([&] {
        if (id == SPA_IO_Clock) {
            m_clockArea = static_cast<spa_io_clock*>(area);
            m_ownClockId = m_clockArea != nullptr ? m_clockArea->id : 0;
        } else {
            m_positionArea = static_cast<spa_io_position*>(area);
        }
        start();
    });
    return 0;
}

int SourceNode::sendCommand(const spa_command* command)
{
    switch (SPA_NODE_COMMAND_ID(command)) {
    case SPA_NODE_COMMAND_Start:
        onData([this] {
            m_isStarted = true;
            start();
        });
        return 0;
    case SPA_NODE_COMMAND_Pause:
    case SPA_NODE_COMMAND_Suspend:
        stopCycles();
        return 0;
    default:
        return -ENOTSUP;
    }
}

void SourceNode::stopCycles()
{
    onData([this] {
        m_isStarted = false;
        m_isTicking = false;
        armTimer(0);
    });
}

void SourceNode::jumpPosition(std::int64_t frames)
{
    onData([&] { m_clock.jump(frames); });
}

void SourceNode::overrun(std::int64_t frames)
{
    onData([&] { m_clock.overrun(frames); });
}

void SourceNode::setRate(int sampleRate)
{
    m_sampleRate = sampleRate;
    onData([&] { m_clock.setRate(sampleRate); });
    for (spa_param_info& param : m_params) {
        param.flags ^= SPA_PARAM_INFO_SERIAL;
    }
    emitInfo();
}

void SourceNode::setQuantum(int frames)
{
    onData([&] { m_clock.setQuantum(frames); });
}

void SourceNode::setClockId(std::uint32_t id)
{
    onData([&] {
        m_foreignClockId = id;
        m_clock.restartPosition();
    });
}

void SourceNode::hang()
{
    onData([this] {
        m_isHung = true;
        armTimer(0);
    });
}

void SourceNode::resumeCycles(VirtualDevice::Resume how)
{
    onData([&] {
        if (!m_isHung) {
            return;
        }
        m_isHung = false;
        if (how == VirtualDevice::Resume::skipping) {
            const std::int64_t lost = m_clock.framesDueBy(monotonicNsec());
            m_clock.jump(lost);
            m_clock.addTime(lost);
        }
        if (m_isTicking) {
            armTimer(m_clock.dueNsec());
        } else {
            start();
        }
    });
}

// The areas and the order to start come in any order; the clock starts with the last of them. A clock that runs is left
// alone: the graph gives the areas again whenever a link comes or goes.
void SourceNode::start()
{
    if (m_isTicking || !m_isStarted || m_isHung || m_clockArea == nullptr || isFollowing()) {
        return;
    }
    m_isTicking = true;
    m_isAwaited = false;
    m_isDue = false;
    m_isRecovering = false;
    m_patienceNsec = startPatienceNsec;
    m_clock.anchor(monotonicNsec());
    armTimer(m_clock.dueNsec());
}

bool SourceNode::isFollowing() const
{
    return !m_hasOwnClock
        || (m_positionArea != nullptr && m_clockArea != nullptr && m_positionArea->clock.id != m_clockArea->id);
}

void SourceNode::armTimer(std::int64_t nsec)
{
    timespec when{};
    when.tv_sec = nsec / nsecPerSecond;
    when.tv_nsec = nsec % nsecPerSecond;
    pw_loop_update_timer(m_dataLoop, m_timer, &when, nullptr, true);
}

void SourceNode::tick()
{
    if (m_isHung) {
        return;
    }
    if (!m_isStarted || m_clockArea == nullptr || isFollowing()) {
        m_isTicking = false;
        return;
    }
    const std::int64_t now = monotonicNsec();
    if (m_isAwaited || m_isRecovering) {
        if (now < m_triggeredNsec + m_patienceNsec) {
            m_isDue = true;
            armTimer(m_triggeredNsec + m_patienceNsec);
            return;
        }
        // The graph lost a cycle, as it may while links change, or somebody hangs. In either case the pace is kept, not
        // made up for, until the graph answers: what it does not hear in time runs together. The first answer may still
        // belong to the cycle that was given up, so one more cycle is given its full time.
        m_isRecovering = m_isAwaited;
        m_patienceNsec = m_isAwaited ? m_clock.quantum() * nsecPerSecond / m_clock.rate() : patienceNsec;
    }
    if (now - m_clock.dueNsec() > catchUpLimitNsec) {
        m_clock.anchor(now);
    }
    runCycle();
    armTimer(m_clock.dueNsec());
}

void SourceNode::runCycle()
{
    const RigClock::Cycle cycle = m_clock.advance();
    renderPorts(cycle.frames, cycle.content);

    m_clockArea->id = m_foreignClockId != 0 ? m_foreignClockId : m_ownClockId;
    m_clockArea->flags = 0;
    m_clockArea->nsec = static_cast<std::uint64_t>(cycle.dueNsec);
    m_clockArea->rate = SPA_FRACTION(1, static_cast<std::uint32_t>(cycle.rate));
    m_clockArea->position = static_cast<std::uint64_t>(cycle.position);
    m_clockArea->duration = static_cast<std::uint64_t>(cycle.frames);
    m_clockArea->delay = 0;
    m_clockArea->rate_diff = 1.0;
    m_clockArea->next_nsec = static_cast<std::uint64_t>(cycle.nextNsec);

    m_isAwaited = true;
    m_triggeredNsec = monotonicNsec();
    spa_node_call_ready(&m_callbacks, SPA_STATUS_HAVE_DATA);
}

void SourceNode::renderPorts(int frames, std::int64_t content)
{
    for (std::size_t channel = 0; channel < m_ports.size(); ++channel) {
        float* target = m_ports[channel]->target();
        m_channels[channel] = target != nullptr ? target : m_unheard.data() + channel * maxCycleFrames;
    }
    if (m_render) {
        m_render(m_channels, frames, content);
    } else {
        for (float* channel : m_channels) {
            std::fill_n(channel, frames, 0.0F);
        }
    }
    for (const auto& port : m_ports) {
        if (port->target() != nullptr) {
            port->publish(frames);
        }
    }
    m_content.store(m_clock.content(), std::memory_order_relaxed);
    m_cycles.fetch_add(1, std::memory_order_relaxed);
}

// The graph calls this when it wants audio from a follower, and when a driver's cycle has gone round.
int SourceNode::process()
{
    if (!isFollowing()) {
        m_isAwaited = false;
        if (!m_isRecovering) {
            m_patienceNsec = patienceNsec;
        }
        if (!m_isRecovering && std::exchange(m_isDue, false) && m_isTicking && !m_isHung) {
            armTimer(m_clock.dueNsec());
        }
        return SPA_STATUS_OK;
    }
    if (m_positionArea == nullptr || m_isHung) {
        return SPA_STATUS_OK;
    }
    const auto frames = static_cast<int>(std::min<std::uint64_t>(m_positionArea->clock.duration, maxCycleFrames));
    renderPorts(frames, m_clock.advanceBorrowed(frames));
    return SPA_STATUS_HAVE_DATA;
}

}  // namespace vantiro
