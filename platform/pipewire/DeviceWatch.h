// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"
#include "platform/pipewire/DeviceList.h"
#include "platform/pipewire/GraphMirror.h"

#include <functional>
#include <memory>
#include <vector>

namespace vantiro {

/// Tells of changes to the list of devices. What happens within 200 ms is told once: a card that is plugged in changes
/// the graph dozens of times.
class DeviceWatch final : public HardwareWatch, private GraphMirror::Observer {
public:
    DeviceWatch(std::shared_ptr<GraphMirror> mirror, std::function<void()> onChange);
    ~DeviceWatch() override;

private:
    void graphChanged(const GraphSnapshot& graph) override;
    void connectionLost() override { }
    void report();

    std::shared_ptr<GraphMirror> m_mirror;
    std::function<void()> m_onChange;
    spa_source* m_timer = nullptr;
    bool m_pending = false;
    std::vector<AudioDevice> m_reported;
};

}  // namespace vantiro
