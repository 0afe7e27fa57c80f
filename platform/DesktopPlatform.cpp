// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopPlatform.h"

#include "core/foundation/RealTime.h"
#include "platform/desktop/Bus.h"
#include "platform/desktop/DesktopPermission.h"
#include "platform/desktop/DesktopPower.h"
#include "platform/pipewire/PipeWireAudio.h"

namespace vantiro {

namespace {

    // A take waits for no bus: better late at times than never.
    bool mayAskForRealTime()
    {
        return realTime::isGranted() || (!isStuck(BusKind::session) && !isStuck(BusKind::system));
    }

}  // namespace

Platform makeDesktopPlatform()
{
    return {.audio = std::make_unique<PipeWireAudio>(mayAskForRealTime()),
        .permission = std::make_shared<DesktopPermission>(),
        .power = std::make_shared<DesktopPower>()};
}

}  // namespace vantiro
