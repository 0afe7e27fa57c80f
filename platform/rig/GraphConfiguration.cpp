// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/GraphConfiguration.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace vantiro::GraphConfiguration {

namespace {

    // Without the access module every client waits for its permissions for ever.
    constexpr auto modules = R"(
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    support.*       = support/libspa-support
}

context.modules = [
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-spa-node-factory }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-access }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-link-factory }
)";

    // No process's niceness is touched: 20 is none.
    constexpr auto realTimeModule = "    { name = libpipewire-module-rt args = { nice.level = 20 } }\n";

    QStringList positions(int channels)
    {
        static const QStringList surround = {QStringLiteral("FL"), QStringLiteral("FR")};
        if (channels == 1) {
            return {QStringLiteral("MONO")};
        }
        if (channels == 2) {
            return surround;
        }
        QStringList result;
        for (int channel = 0; channel < channels; ++channel) {
            result.append(QStringLiteral("AUX%1").arg(channel));
        }
        return result;
    }

    // The daemon's own notation is a superset of JSON, so JSON quotes strings that a test makes up.
    QByteArray sinkObject(const VirtualSink& sink)
    {
        const QJsonObject arguments{
            {QStringLiteral("factory.name"), QStringLiteral("support.null-audio-sink")},
            {QStringLiteral("node.name"), sink.name},
            {QStringLiteral("node.description"), sink.description.isEmpty() ? sink.name : sink.description},
            {QStringLiteral("media.class"), QStringLiteral("Audio/Sink")},
            {QStringLiteral("audio.channels"), sink.channels},
            {QStringLiteral("audio.position"), positions(sink.channels).join(QLatin1Char(','))},
            {QStringLiteral("monitor.channel-volumes"), true},
            {QStringLiteral("object.linger"), true},
            {QStringLiteral("adapter.auto-port-config"),
                QJsonObject{{QStringLiteral("mode"), QStringLiteral("dsp")}, {QStringLiteral("monitor"), true},
                    {QStringLiteral("position"), QStringLiteral("preserve")}}},
        };
        return "    { factory = adapter args = " + QJsonDocument(arguments).toJson(QJsonDocument::Compact) + " }\n";
    }

    QByteArray numbers(const QList<int>& values)
    {
        QByteArray result;
        for (const int value : values) {
            result += QByteArray::number(value) + ' ';
        }
        return result;
    }

}  // namespace

QByteArray text(const PrivateGraphOptions& options, bool hasRealTime)
{
    QByteArray result = "context.properties = {\n"
                        "    core.daemon = true\n"
                        "    core.name = "
        + socketName.toLatin1()
        + "\n"
          "    support.dbus = false\n"
          "    log.level = 2\n"
          "    mem.warn-mlock = false\n"
          "    clock.power-of-two-quantum = false\n";
    result += "    default.clock.rate = " + QByteArray::number(options.defaultRate) + '\n';
    result += "    default.clock.allowed-rates = [ " + numbers(options.allowedRates) + "]\n";
    result += "    default.clock.quantum = " + QByteArray::number(options.quantum) + '\n';
    result += "    default.clock.min-quantum = " + QByteArray::number(options.minQuantum) + '\n';
    result += "    default.clock.max-quantum = " + QByteArray::number(options.maxQuantum) + '\n';
    result += "}\n";
    result += modules;
    if (hasRealTime) {
        result += realTimeModule;
    }
    result += "]\n\ncontext.objects = [\n"
              "    { factory = metadata args = { metadata.name = default } }\n"
              "    { factory = spa-node-factory args = { factory.name = support.node.driver node.name = Dummy-Driver\n"
              "        node.group = pipewire.dummy priority.driver = 20000 } }\n";
    for (const VirtualSink& sink : options.sinks) {
        result += sinkObject(sink);
    }
    return result + "]\n";
}

}  // namespace vantiro::GraphConfiguration
