// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/AudioDevice.h"

#include "core/foundation/Json.h"

#include <utility>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

QJsonObject AudioDevice::toJson() const
{
    return {
        {"uid"_L1, uid},
        {"name"_L1, name},
        {"transport"_L1, transport},
        {"inputChannels"_L1, static_cast<qint64>(inputChannels)},
        {"outputChannels"_L1, static_cast<qint64>(outputChannels)},
        {"sampleRate"_L1, json::number(sampleRate)},
        {"inputTerminal"_L1, inputTerminal},
    };
}

Result<AudioDevice> AudioDevice::fromJson(const QJsonObject& object)
{
    AudioDevice device;
    json::Reader reader(object);
    reader.read("uid"_L1, device.uid);
    reader.read("name"_L1, device.name);
    reader.read("transport"_L1, device.transport);
    reader.read("inputChannels"_L1, device.inputChannels);
    reader.read("outputChannels"_L1, device.outputChannels);
    reader.read("sampleRate"_L1, device.sampleRate);
    reader.read("inputTerminal"_L1, device.inputTerminal);
    return reader.finish(std::move(device));
}

}  // namespace vantiro
