// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/DemoRig.h"

#include "core/foundation/Files.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/rig/MadeSet.h"
#include "tool/Terminal.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <random>

#include <unistd.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// Frames a cycle; long enough for a busy machine without real-time priorities.
    constexpr int quantum = 1024;
    constexpr int patienceMilliseconds = 5000;
    const QString speakersName = u"virtual-speakers"_s;
    const QString appNodeName = u"virtual-deck"_s;

    VirtualDevice::Options::Render playsTheSet()
    {
        return [set = MadeSet(DemoRig::sampleRate)](std::span<float* const> channels, int frames,
                   std::int64_t position) { set.render(channels, frames, position); };
    }

    /// White noise with this peak (linear).
    VirtualDevice::Options::Render hisses(float peak)
    {
        return
            [peak, generator = std::minstd_rand()](std::span<float* const> channels, int frames, std::int64_t) mutable {
                std::uniform_real_distribution<float> sample(-peak, peak);
                for (float* channel : channels) {
                    std::generate_n(channel, frames, [&] { return sample(generator); });
                }
            };
    }

    /// What is there beside the DJ app, as PipeWire would show it.
    std::vector<VirtualDevice::Options> otherGear()
    {
        constexpr float cablePeak = 0.1F;   // -20 dB, as loud as a mix.
        constexpr float roomPeak = 0.002F;  // -54 dB.
        return {
            {.name = u"alsa_input.usb-Virtual_Interface-00.analog-stereo"_s,
                .description = u"Virtual Interface"_s,
                .properties = {{u"device.bus"_s, u"usb"_s}}},
            {.name = u"alsa_input.pci-0000_00_1f.3.analog-mono"_s,
                .description = u"Built-in Microphone"_s,
                .channels = 1,
                .properties = {{u"device.bus"_s, u"pci"_s}, {u"alsa.driver_name"_s, u"snd_hda_intel"_s}},
                .render = hisses(roomPeak)},
            {.name = u"virtual-cable"_s, .description = u"Virtual Cable"_s, .render = hisses(cablePeak)},
        };
    }

    /// What a session manager would do: the app's sound goes to the speakers.
    Result<void> linkToSpeakers()
    {
        for (const QString& side : {u"FL"_s, u"FR"_s}) {
            QProcess link;
            link.setProcessChannelMode(QProcess::MergedChannels);
            link.start(
                u"pw-link"_s, {u"%1:output_%2"_s.arg(appNodeName, side), u"%1:playback_%2"_s.arg(speakersName, side)});
            if (!link.waitForFinished(patienceMilliseconds) || link.exitCode() != 0) {
                return captureFailure(
                    u"the virtual DJ app found no speakers: %1"_s.arg(QString::fromUtf8(link.readAll()).trimmed()));
            }
        }
        return {};
    }

}  // namespace

Result<std::unique_ptr<DemoRig>> DemoRig::make()
{
    std::unique_ptr<DemoRig> rig(new DemoRig);
    if (!rig->m_folder.isValid()) {
        return captureFailure(u"no temporary folder could be made: %1"_s.arg(rig->m_folder.errorString()));
    }
    qputenv("XDG_DATA_HOME", rig->m_folder.filePath(u"data"_s).toUtf8());
    qputenv("XDG_CONFIG_HOME", rig->m_folder.filePath(u"config"_s).toUtf8());
    qputenv("XDG_STATE_HOME", rig->m_folder.filePath(u"state"_s).toUtf8());
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "disabled:");

    // What a user does whose DJ app Vantiro does not know.
    const QJsonDocument djApps(QJsonArray{QString(QLatin1StringView(appIdentifier))});
    if (auto written = files::replace(VantiroPaths::djAppsFile(), djApps.toJson(), files::Durability::passing);
        !written) {
        return std::unexpected(written.error());
    }

    auto graph = PrivateGraph::start(rig->m_folder.filePath(u"run"_s),
        {.quantum = quantum, .sinks = {{.name = speakersName, .description = u"Virtual Speakers"_s, .channels = 2}}});
    if (!graph) {
        return std::unexpected(graph.error());
    }
    rig->m_graph = *std::move(graph);
    rig->m_graph->applyEnvironment();

    if (auto started = rig->startDevices(); !started) {
        return std::unexpected(started.error());
    }
    if (auto started = rig->startApp(); !started) {
        return std::unexpected(started.error());
    }
    return rig;
}

DemoRig::~DemoRig()
{
    m_app.kill();
    m_app.waitForFinished();
}

Result<void> DemoRig::startDevices()
{
    for (VirtualDevice::Options options : otherGear()) {
        options.sampleRate = sampleRate;
        options.quantum = quantum;
        auto device = VirtualDevice::make(m_graph->socketPath(), options);
        if (!device) {
            return std::unexpected(device.error());
        }
        m_devices.push_back(*std::move(device));
    }
    return {};
}

Result<void> DemoRig::startApp()
{
    m_app.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_app.start(QCoreApplication::applicationFilePath(), {u"demo"_s, u"--be-the-app"_s, m_graph->socketPath()});
    if (!m_app.waitForReadyRead(patienceMilliseconds)) {
        return captureFailure(u"the virtual DJ app did not start"_s);
    }
    return linkToSpeakers();
}

int DemoRig::beTheApp(const QString& socketPath)
{
    const auto stream = VirtualDevice::make(socketPath,
        {.name = appNodeName,
            .description = u"Virtual Deck"_s,
            .channels = 2,
            .sampleRate = sampleRate,
            .clock = VirtualDevice::Options::Clock::borrowed,
            .properties = {{u"media.class"_s, u"Stream/Output/Audio"_s}},
            .clientProperties = {{u"application.id"_s, QLatin1StringView(appIdentifier)},
                {u"application.name"_s, u"Virtual Deck"_s}},
            .render = playsTheSet()});
    if (!stream) {
        return Terminal::fail(errorText(stream.error()));
    }
    Terminal::print(u"ready"_s);
    for (;;) {
        ::pause();
    }
}

}  // namespace vantiro
