// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "platform/rig/PrivateGraph.h"
#include "platform/rig/VirtualDevice.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace vantiro {

/// The stage of the demo: a PipeWire of its own, with a virtual DJ app that plays a made set and what could be mistaken
/// for it (a silent interface, a microphone in a room, a virtual cable with noise on it), and folders of its own for
/// everything that the product would keep. While it lives, this process and those that it starts see nothing else.
class DemoRig {
public:
    /// Identifier of the virtual DJ app, a program of its own that plays to virtual speakers.
    static constexpr auto appIdentifier = "org.vantiro.VirtualDeck";
    static constexpr int sampleRate = 48000;

    [[nodiscard]] static Result<std::unique_ptr<DemoRig>> make();

    /// Ends the DJ app.
    ~DemoRig();

    DemoRig(const DemoRig&) = delete;
    DemoRig& operator=(const DemoRig&) = delete;

    /// The other side: what the program that make() launches does until it is ended. It plays to the graph behind this
    /// socket.
    static int beTheApp(const QString& socketPath);

private:
    DemoRig() = default;

    [[nodiscard]] Result<void> startDevices();
    [[nodiscard]] Result<void> startApp();

    QTemporaryDir m_folder;
    std::unique_ptr<PrivateGraph> m_graph;
    std::vector<std::unique_ptr<VirtualDevice>> m_devices;
    QProcess m_app;
};

}  // namespace vantiro
