// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/DeviceWatch.h"

namespace vantiro {

namespace {

    constexpr long gatherNanoseconds = 200'000'000;

}  // namespace

DeviceWatch::DeviceWatch(
    std::shared_ptr<GraphMirror> mirror, std::shared_ptr<ProgramList> programs, std::function<void()> onChange)
    : m_mirror(std::move(mirror))
    , m_programs(std::move(programs))
    , m_onChange(std::move(onChange))
{
    // The first picture is no change.
    const auto first = m_mirror->snapshot();
    const LoopLock lock(m_mirror->loop());
    m_reported = look(*first);
    m_timer = pw_loop_add_timer(
        pw_thread_loop_get_loop(m_mirror->loop()),
        [](void* data, std::uint64_t) { static_cast<DeviceWatch*>(data)->report(); }, this);
    m_mirror->add(*this);
    graphChanged(m_mirror->current());
}

DeviceWatch::~DeviceWatch()
{
    const LoopLock lock(m_mirror->loop());
    m_mirror->remove(*this);
    pw_loop_destroy_source(pw_thread_loop_get_loop(m_mirror->loop()), m_timer);
}

DeviceWatch::Sight DeviceWatch::look(const GraphSnapshot& graph)
{
    Sight sight;
    for (DeviceList::Entry& entry : DeviceList::entries(graph)) {
        sight.devices.push_back(std::move(entry.device));
    }
    for (const ProgramList::Program& program : m_programs->programs(graph)) {
        sight.processes.push_back(program.process());
    }
    return sight;
}

void DeviceWatch::graphChanged(const GraphSnapshot& graph)
{
    if (m_pending || look(graph) == m_reported) {
        return;
    }
    m_pending = true;
    timespec delay{.tv_sec = 0, .tv_nsec = gatherNanoseconds};
    pw_loop_update_timer(pw_thread_loop_get_loop(m_mirror->loop()), m_timer, &delay, nullptr, false);
}

void DeviceWatch::report()
{
    m_pending = false;
    Sight now = look(m_mirror->current());
    if (now == m_reported) {
        return;
    }
    m_reported = std::move(now);
    m_onChange();
}

}  // namespace vantiro
