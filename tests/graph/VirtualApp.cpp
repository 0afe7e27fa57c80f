// SPDX-License-Identifier: GPL-3.0-or-later
// A program that plays into a graph: the ramp on one stream and, if a number is given, a steady value on a second one.
// SIGUSR1 closes the streams, SIGUSR2 opens them again, SIGTERM ends the program.
//
//     vantiro_virtual_app SOCKET NODE APPLICATION_ID CHANNELS [STEADY]
#include "platform/rig/RampSignal.h"
#include "platform/rig/VirtualDevice.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <cstdio>

#include <sys/prctl.h>

namespace {

using namespace vantiro;
using namespace Qt::StringLiterals;

struct Wanted {
    QString socket;
    QString node;
    QString id;
    int channels = 2;
    float steady = 0;
};

std::unique_ptr<VirtualDevice> open(const Wanted& wanted, const QString& name, VirtualDevice::Options::Render render)
{
    auto stream = VirtualDevice::make(wanted.socket,
        {.name = name,
            .channels = wanted.channels,
            .clock = VirtualDevice::Options::Clock::borrowed,
            .properties = {{u"media.class"_s, u"Stream/Output/Audio"_s}},
            .clientProperties = {{u"application.id"_s, wanted.id}, {u"application.name"_s, u"Deck "_s + wanted.node}},
            .render = std::move(render)});
    if (!stream) {
        std::fprintf(stderr, "%s\n", qPrintable(errorText(stream.error())));
        std::exit(1);
    }
    return *std::move(stream);
}

std::vector<std::unique_ptr<VirtualDevice>> openAll(const Wanted& wanted)
{
    std::vector<std::unique_ptr<VirtualDevice>> streams;
    streams.push_back(open(wanted, wanted.node, RampSignal::render));
    if (wanted.steady != 0) {
        streams.push_back(open(wanted, wanted.node + u"-steady"_s,
            [value = wanted.steady](std::span<float* const> channels, int frames, std::int64_t) {
                for (float* channel : channels) {
                    std::fill_n(channel, frames, value);
                }
            }));
    }
    return streams;
}

}  // namespace

int main(int argumentCount, char** arguments)
{
    // Whoever started it may crash.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t orders;
    sigemptyset(&orders);
    for (const int number : {SIGUSR1, SIGUSR2, SIGTERM}) {
        sigaddset(&orders, number);
    }
    // Before there are other threads, so that all of them leave the signals to this one.
    ::pthread_sigmask(SIG_BLOCK, &orders, nullptr);
    const QCoreApplication application(argumentCount, arguments);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() < 5) {
        return 2;
    }
    const Wanted wanted{.socket = words[1],
        .node = words[2],
        .id = words[3],
        .channels = words[4].toInt(),
        .steady = static_cast<float>(words.value(5).toInt()) / 8388608.0F};
    auto streams = openAll(wanted);
    for (int order = 0; ::sigwait(&orders, &order) == 0 && order != SIGTERM;) {
        streams.clear();
        if (order == SIGUSR2) {
            streams = openAll(wanted);
        }
    }
    return 0;
}
