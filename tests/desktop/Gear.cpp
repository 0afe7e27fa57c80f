// SPDX-License-Identifier: GPL-3.0-or-later
// A graph of its own with gear that plays a made set, and "speakers" for what players play, for scripts that look at
// the window. Streams of other programs find ports once it is ready.
//
//     vantiro_gear FOLDER
//
// Prints the environment in which the graph is found, NAME=VALUE by line, and "ready". Then it does what it reads, a
// line each, and answers with "done":
//
//     plug NAME         an interface of that name is plugged in; it plays the set, the loudest bars at -9 dB
//     unplug NAME       it is pulled out
//     level NAME DB     its loudest bars reach so many decibels; what is above 0 is cut off
//     pause, resume     the graph hangs, and goes on
//
// The end of the input ends it.
#include "platform/rig/MadeSet.h"
#include "platform/rig/PrivateGraph.h"
#include "platform/rig/VirtualDevice.h"
#include "tests/graph/StreamLinks.h"

#include <QCoreApplication>
#include <QTextStream>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <csignal>
#include <map>

#include <sys/prctl.h>

namespace {

using namespace vantiro;
using namespace Qt::StringLiterals;

constexpr int quantum = 1024;
constexpr int sampleRate = 48000;
/// Where the set is at its loudest from the first bar on.
constexpr std::int64_t firstFrame = 8 * sampleRate;
constexpr float loudestBarDB = -7;

float gain(float peakDB)
{
    return std::pow(10.0F, (peakDB - loudestBarDB) / 20);
}

struct Interface {
    std::atomic<float> gain = ::gain(-9);
    std::unique_ptr<VirtualDevice> device = {};
};

VirtualDevice::Options::Render plays(const Interface& interface)
{
    return
        [&interface, set = MadeSet(sampleRate)](std::span<float* const> channels, int frames, std::int64_t position) {
            set.render(channels, frames, firstFrame + position);
            const float gain = interface.gain;
            for (float* channel : channels) {
                std::transform(channel, channel + frames, channel,
                    [gain](float sample) { return std::clamp(sample * gain, -1.0F, 1.0F); });
            }
        };
}

/// White noise with this peak (linear), as a microphone in a quiet room has it.
VirtualDevice::Options::Render hisses(float peak)
{
    return [peak, state = std::uint32_t{1}](std::span<float* const> channels, int frames, std::int64_t) mutable {
        for (float* channel : channels) {
            std::generate_n(channel, frames, [&] {
                state = state * 1664525U + 1013904223U;
                return peak * (static_cast<float>(state >> 8) / 8388608.0F - 1.0F);
            });
        }
    };
}

std::unique_ptr<VirtualDevice> make(const PrivateGraph& graph, VirtualDevice::Options options)
{
    options.sampleRate = sampleRate;
    options.quantum = quantum;
    auto device = VirtualDevice::make(graph.socketPath(), options);
    if (!device) {
        QTextStream(stderr) << errorText(device.error()) << '\n';
        std::exit(1);
    }
    return *std::move(device);
}

}  // namespace

int main(int argc, char* argv[])
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        return 2;
    }
    const auto graph = PrivateGraph::start(QString::fromLocal8Bit(argv[1]),
        {.quantum = quantum, .sinks = {{.name = u"speakers"_s, .description = u"Booth Monitors"_s}}});
    if (!graph) {
        QTextStream(stderr) << errorText(graph.error()) << '\n';
        return 1;
    }
    (*graph)->applyEnvironment();
    if (const auto given = PrivateGraph::givePortsToStreams(); !given) {
        QTextStream(stderr) << errorText(given.error()) << '\n';
        return 1;
    }
    const test::StreamLinks links({u"vantiro-player"_s, u"pw-cat"_s}, u"speakers"_s);
    QTextStream out(stdout);
    for (const auto& [name, value] : (*graph)->environment()) {
        out << name << '=' << value << '\n';
    }
    const auto microphone = make(**graph,
        {.name = u"alsa_input.pci-0000_00_1f.3.analog-mono"_s,
            .description = u"Internal Microphone"_s,
            .channels = 1,
            .properties = {{u"device.bus"_s, u"pci"_s}, {u"alsa.driver_name"_s, u"snd_hda_intel"_s}},
            .render = hisses(0.002F)});
    out << "ready" << Qt::endl;

    std::map<QString, Interface> interfaces;
    QTextStream in(stdin);
    for (QString line = in.readLine(); !line.isNull(); line = in.readLine()) {
        const QString order = line.section(u' ', 0, 0);
        if (order == u"pause"_s) {
            (*graph)->pause();
        } else if (order == u"resume"_s) {
            (*graph)->resume();
        }
        const QString name = order == u"level"_s ? line.section(u' ', 1, -2) : line.section(u' ', 1);
        Interface& interface = interfaces[name];
        if (order == u"plug"_s) {
            interface.device = make(**graph,
                {.name = u"alsa_input.usb-%1-00.analog-stereo"_s.arg(QString(name).replace(u' ', u'_')),
                    .description = name,
                    .properties = {{u"device.bus"_s, u"usb"_s}},
                    .render = plays(interface)});
        } else if (order == u"unplug"_s) {
            interface.device.reset();
        } else if (order == u"level"_s) {
            interface.gain = gain(line.section(u' ', -1).toFloat());
        }
        out << "done" << Qt::endl;
    }
    return 0;
}
