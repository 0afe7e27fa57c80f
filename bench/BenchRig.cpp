// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/BenchRig.h"

#include <QFile>

namespace vantiro {

Result<std::unique_ptr<BenchRig>> BenchRig::make()
{
    std::unique_ptr<BenchRig> rig(new BenchRig);
    if (!rig->m_folder.isValid()) {
        return captureFailure(QStringLiteral("no temporary folder could be made: %1").arg(rig->m_folder.errorString()));
    }
    for (const char* variable : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"}) {
        qputenv(variable, QFile::encodeName(rig->path(QLatin1StringView(variable))));
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    auto graph = PrivateGraph::start(rig->path(QStringLiteral("run")));
    if (!graph) {
        return std::unexpected(graph.error());
    }
    rig->m_graph = *std::move(graph);
    rig->m_graph->applyEnvironment();
    return rig;
}

Result<std::unique_ptr<VirtualDevice>> BenchRig::makeDevice(VirtualDeviceOptions::Render render) const
{
    return VirtualDevice::make(m_graph->socketPath(),
        {.name = QLatin1StringView(deviceName),
            .channels = 2,
            .sampleRate = sampleRate,
            .quantum = 256,
            .render = std::move(render)});
}

}  // namespace vantiro
