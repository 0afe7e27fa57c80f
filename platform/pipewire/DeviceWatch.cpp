// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/DeviceWatch.h"

namespace vantiro {

namespace {

    constexpr long gatherNanoseconds = 200'000'000;

    std::vector<AudioDevice> devicesOf(const GraphSnapshot& graph)
    {
        std::vector<AudioDevice> devices;
        for (DeviceList::Entry& entry : DeviceList::entries(graph)) {
            devices.push_back(std::move(entry.device));
        }
        return devices;
    }

}  // namespace

DeviceWatch::DeviceWatch(std::shared_ptr<GraphMirror> mirror, std::function<void()> onChange)
    : m_mirror(std::move(mirror))
    , m_onChange(std::move(onChange))
{
    // The first picture is no change.
    const auto first = m_mirror->snapshot();
    const LoopLock lock(m_mirror->loop());
    m_reported = devicesOf(*first);
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

void DeviceWatch::graphChanged(const GraphSnapshot& graph)
{
    if (m_pending || devicesOf(graph) == m_reported) {
        return;
    }
    m_pending = true;
    timespec delay{.tv_sec = 0, .tv_nsec = gatherNanoseconds};
    pw_loop_update_timer(pw_thread_loop_get_loop(m_mirror->loop()), m_timer, &delay, nullptr, false);
}

void DeviceWatch::report()
{
    m_pending = false;
    std::vector<AudioDevice> now = devicesOf(m_mirror->current());
    if (now == m_reported) {
        return;
    }
    m_reported = std::move(now);
    m_onChange();
}

}  // namespace vantiro
