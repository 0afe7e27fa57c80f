// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"
#include "platform/pipewire/DeviceList.h"
#include "platform/pipewire/GraphMirror.h"
#include "platform/pipewire/ProgramList.h"

#include <functional>
#include <memory>
#include <vector>

namespace vantiro {

/// Tells of changes to the lists of devices and programs. What happens within 200 ms is told once: a card that is
/// plugged in changes the graph dozens of times.
class DeviceWatch final : public HardwareWatch, private GraphMirror::Observer {
public:
    DeviceWatch(
        std::shared_ptr<GraphMirror> mirror, std::shared_ptr<ProgramList> programs, std::function<void()> onChange);
    ~DeviceWatch() override;

private:
    /// What a change is told of.
    struct Sight {
        std::vector<AudioDevice> devices;
        std::vector<AudioProcess> processes;

        bool operator==(const Sight&) const = default;
    };

    [[nodiscard]] Sight look(const GraphSnapshot& graph);
    void graphChanged(const GraphSnapshot& graph) override;
    void connectionLost() override { }
    void report();

    std::shared_ptr<GraphMirror> m_mirror;
    std::shared_ptr<ProgramList> m_programs;
    std::function<void()> m_onChange;
    spa_source* m_timer = nullptr;
    bool m_pending = false;
    Sight m_reported;
};

}  // namespace vantiro
