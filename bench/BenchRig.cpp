// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/BenchRig.h"

#include <QFile>
#include <QProcess>

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
    auto graph = PrivateGraph::start(rig->path(QStringLiteral("run")),
        {.sinks = {{.name = QLatin1StringView(sinkName), .description = QStringLiteral("Speakers"), .channels = 2}}});
    if (!graph) {
        return std::unexpected(graph.error());
    }
    rig->m_graph = *std::move(graph);
    rig->m_graph->applyEnvironment();
    return rig;
}

Result<std::unique_ptr<VirtualDevice>> BenchRig::makeDevice(
    VirtualDeviceOptions::Render render, const QString& name, int quantum) const
{
    return VirtualDevice::make(m_graph->socketPath(),
        {.name = name, .channels = 2, .sampleRate = sampleRate, .quantum = quantum, .render = std::move(render)});
}

Result<std::unique_ptr<VirtualDevice>> BenchRig::makeProgram(VirtualDeviceOptions::Render render) const
{
    auto stream = VirtualDevice::make(m_graph->socketPath(),
        {.name = QLatin1StringView(programName),
            .channels = 2,
            .sampleRate = sampleRate,
            .clock = VirtualDeviceOptions::Clock::borrowed,
            .properties = {{QStringLiteral("media.class"), QStringLiteral("Stream/Output/Audio")}},
            .clientProperties = {{QStringLiteral("application.id"), QLatin1StringView(programId)}},
            .render = std::move(render)});
    for (const char* side : {"FL", "FR"}) {
        if (stream
            && !link(QStringLiteral("%1:output_%2").arg(QLatin1StringView(programName), QLatin1StringView(side)),
                QStringLiteral("%1:playback_%2").arg(QLatin1StringView(sinkName), QLatin1StringView(side)))) {
            return captureFailure(QStringLiteral("the program found no speakers"));
        }
    }
    return stream;
}

bool BenchRig::link(const QString& output, const QString& input)
{
    constexpr int limitMilliseconds = 2'000;
    QProcess link;
    link.setProcessChannelMode(QProcess::MergedChannels);
    link.start(QStringLiteral("pw-link"), {output, input});
    return link.waitForFinished(limitMilliseconds) && link.exitCode() == 0;
}

}  // namespace vantiro
