// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopPlatform.h"

#include "platform/desktop/DesktopPermission.h"
#include "platform/desktop/DesktopPower.h"
#include "platform/pipewire/PipeWireAudio.h"

namespace vantiro {

Platform makeDesktopPlatform()
{
    return {.audio = std::make_unique<PipeWireAudio>(),
        .permission = std::make_shared<DesktopPermission>(),
        .power = std::make_shared<DesktopPower>()};
}

}  // namespace vantiro
