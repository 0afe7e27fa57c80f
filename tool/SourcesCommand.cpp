// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopPlatform.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Terminal.h"

#include <QJsonArray>
#include <QJsonDocument>

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
    if (arguments->has(QStringLiteral("--json"))) {
        QJsonArray array;
        for (const AudioDevice& device : devices) {
            array.append(device.toJson());
        }
        Terminal::printJson(QJsonDocument(array).toJson());
        return Terminal::done;
    }
    if (devices.empty()) {
        Terminal::print(QStringLiteral("Nothing to record from. Connect an audio interface, a mixer or a controller."));
        return Terminal::done;
    }
    const std::optional<QString> defaultUID = platform.audio->defaultInputUID();
    for (const AudioDevice& device : devices) {
        Terminal::print(line(device, device.uid == defaultUID));
    }
    return Terminal::done;
}

}  // namespace vantiro
