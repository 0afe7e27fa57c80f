// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/AudioPlatform.h"

#include <algorithm>

namespace vantiro {

std::vector<AudioDevice> inputDevices(AudioPlatform& audio)
{
    std::vector<AudioDevice> devices = audio.devices();
    std::erase_if(devices, [](const AudioDevice& device) { return !device.hasInput(); });
    return devices;
}

}  // namespace vantiro
