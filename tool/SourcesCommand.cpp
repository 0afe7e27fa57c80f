// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopPlatform.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Terminal.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace vantiro {

namespace {

    QString line(const AudioDevice& device, bool isDefault)
    {
        return QStringLiteral("%1 %2\n    %3, %4 %5 at %6 Hz, terminal %7\n    --device %8")
            .arg(isDefault ? QStringLiteral("*") : QStringLiteral("-"), device.name, device.transport,
                QString::number(device.inputChannels),
                device.inputChannels == 1 ? QStringLiteral("channel") : QStringLiteral("channels"),
                QString::number(device.sampleRate), device.inputTerminal, device.uid);
    }

    QString line(const AudioProcess& process)
    {
        return QStringLiteral("- %1\n    program, process %2, %3\n    --app %4")
            .arg(process.name)
            .arg(process.pid)
            .arg(process.isPlaying ? QStringLiteral("playing") : QStringLiteral("quiet"),
                process.bundleID.value_or(QString::number(process.pid)));
    }

    QByteArray asJson(const std::vector<AudioDevice>& devices, const std::vector<AudioProcess>& processes)
    {
        QJsonArray deviceArray;
        for (const AudioDevice& device : devices) {
            deviceArray.append(device.toJson());
        }
        QJsonArray processArray;
        for (const AudioProcess& process : processes) {
            processArray.append(process.toJson());
        }
        return QJsonDocument(
            QJsonObject{{QStringLiteral("devices"), deviceArray}, {QStringLiteral("programs"), processArray}})
            .toJson();
    }

}  // namespace

int sourcesCommand(const QStringList& words)
{
    const auto arguments = Arguments::parse(words, {}, {QStringLiteral("--json")});
    if (!arguments) {
        return Terminal::misuse(errorText(arguments.error()));
    }
    const Platform platform = makeDesktopPlatform();
    if (!platform.audio->isAvailable()) {
        return Terminal::fail(
            QStringLiteral("PipeWire is not running, so there is no audio to record. Start it and try again."));
    }
    const std::vector<AudioDevice> devices = inputDevices(*platform.audio);
    const std::vector<AudioProcess> processes = platform.audio->processes();
    if (arguments->has(QStringLiteral("--json"))) {
        Terminal::printJson(asJson(devices, processes));
        return Terminal::done;
    }
    if (devices.empty() && processes.empty()) {
        Terminal::print(QStringLiteral(
            "Nothing to record from. Connect an audio interface, a mixer or a controller, or start a DJ app."));
        return Terminal::done;
    }
    const std::optional<QString> defaultUID = platform.audio->defaultInputUID();
    for (const AudioDevice& device : devices) {
        Terminal::print(line(device, device.uid == defaultUID));
    }
    for (const AudioProcess& process : processes) {
        Terminal::print(line(process));
    }
    return Terminal::done;
}

}  // namespace vantiro
