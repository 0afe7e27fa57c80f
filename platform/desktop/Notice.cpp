// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Notice.h"

#include "platform/desktop/ApplicationId.h"
#include "platform/desktop/RunningApplication.h"

#include <cstdint>

#include <systemd/sd-bus.h>

namespace vantiro::Notice {

void show(const QString& sentence)
{
    constexpr const char* name = "org.freedesktop.Notifications";
    const Bus bus = RunningApplication::session();
    const BusMessage call = bus ? newCall(bus, {name, "/org/freedesktop/Notifications", name, "Notify"}) : nullptr;
    if (!call) {
        return;
    }
    constexpr std::uint32_t replacesNone = 0;
    constexpr std::int32_t usualTime = -1;
    // Without the name of the desktop entry: some desktops then take the notice away with the process that sent it. The
    // sentence is the title, which is plain text everywhere.
    if (sd_bus_message_append(call.get(), "susssasa{sv}i", "Vantiro", replacesNone, applicationId,
            sentence.toUtf8().constData(), "", 0, 0, usualTime)
        >= 0) {
        static_cast<void>(send(bus, call));
    }
}

}  // namespace vantiro::Notice
