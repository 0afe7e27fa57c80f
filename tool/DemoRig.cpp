// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/DemoRig.h"

#include "platform/rig/MadeSet.h"

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

}  // namespace

Result<std::unique_ptr<DemoRig>> DemoRig::make()
{
    std::unique_ptr<DemoRig> rig(new DemoRig);
    if (!rig->m_folder.isValid()) {
        return captureFailure(u"no temporary folder could be made: %1"_s.arg(rig->m_folder.errorString()));
    }
    const auto inside = [&rig](const QString& name) { return rig->m_folder.filePath(name); };
    qputenv("XDG_DATA_HOME", inside(u"data"_s).toUtf8());
    qputenv("XDG_CONFIG_HOME", inside(u"config"_s).toUtf8());
    qputenv("XDG_STATE_HOME", inside(u"state"_s).toUtf8());
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");

    auto graph = PrivateGraph::start(inside(u"run"_s));
    if (!graph) {
        return std::unexpected(graph.error());
    }
    rig->m_graph = *std::move(graph);
    rig->m_graph->applyEnvironment();

    auto interface = VirtualDevice::make(rig->m_graph->socketPath(),
        {.name = QLatin1StringView(interfaceName),
            .description = u"Virtual Interface"_s,
            .channels = 2,
            .sampleRate = sampleRate,
            .properties = {{u"device.bus"_s, u"usb"_s}},
            .render = [set = MadeSet(sampleRate)](std::span<float* const> channels, int frames, std::int64_t position) {
                set.render(channels, frames, position);
            }});
    if (!interface) {
        return std::unexpected(interface.error());
    }
    rig->m_interface = *std::move(interface);
    return rig;
}

}  // namespace vantiro
