// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "platform/rig/PrivateGraph.h"
#include "platform/rig/VirtualDevice.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace vantiro {

/// The stage of the demo: a PipeWire of its own, with a virtual audio interface that plays a made set, and folders of
/// its own for everything that the product would keep. While it lives, this process and those that it starts see
/// nothing else.
class DemoRig {
public:
    /// Name of the virtual interface in the graph.
    static constexpr auto interfaceName = "alsa_input.usb-Virtual_Interface-00.analog-stereo";
    static constexpr int sampleRate = 48000;

    [[nodiscard]] static Result<std::unique_ptr<DemoRig>> make();

    [[nodiscard]] VirtualDevice& interface() { return *m_interface; }

private:
    DemoRig() = default;

    QTemporaryDir m_folder;
    std::unique_ptr<PrivateGraph> m_graph;
    std::unique_ptr<VirtualDevice> m_interface;
};

}  // namespace vantiro
