// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "platform/rig/PrivateGraph.h"
#include "platform/rig/VirtualDevice.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace vantiro {

/// The stage of the demo: a PipeWire of its own, with a virtual audio interface and a virtual DJ app that play a made
/// set, and folders of its own for everything that the product would keep. While it lives, this process and those that
/// it starts see nothing else.
class DemoRig {
public:
    /// Name of the virtual interface in the graph.
    static constexpr auto interfaceName = "alsa_input.usb-Virtual_Interface-00.analog-stereo";
    /// Identifier of the virtual DJ app, a program of its own that plays to virtual speakers.
    static constexpr auto appIdentifier = "org.vantiro.VirtualDeck";
    static constexpr int sampleRate = 48000;

    [[nodiscard]] static Result<std::unique_ptr<DemoRig>> make();

    /// Ends the DJ app.
    ~DemoRig();

    DemoRig(const DemoRig&) = delete;
    DemoRig& operator=(const DemoRig&) = delete;

    /// A data folder for one recorder.
    [[nodiscard]] QString dataHome(const QString& name) const { return m_folder.filePath(name); }

    /// The other side: what the program that make() launches does until it is ended. It plays to the graph behind this
    /// socket.
    static int beTheApp(const QString& socketPath);

private:
    DemoRig() = default;

    [[nodiscard]] Result<void> startApp();

    QTemporaryDir m_folder;
    std::unique_ptr<PrivateGraph> m_graph;
    std::unique_ptr<VirtualDevice> m_interface;
    QProcess m_app;
};

}  // namespace vantiro
