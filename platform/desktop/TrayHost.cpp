// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/TrayHost.h"

#include <systemd/sd-bus.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    constexpr const char* watcher = "org.kde.StatusNotifierWatcher";

}  // namespace

TrayHost::TrayHost(BusLink* session) : m_session(session)
{
    if (m_session == nullptr) {
        return;
    }
    connect(m_session, &BusLink::closed, this, [this] { note(false); });
    m_session->follow(u"type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                      "member='NameOwnerChanged',arg0='%1'"_s.arg(QLatin1StringView(watcher)),
        [this](sd_bus_message*) {
            note(false);
            ask();
        });
    for (const auto& member : {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        m_session->follow(u"type='signal',path='/StatusNotifierWatcher',interface='%1',member='%2'"_s.arg(
                              QLatin1StringView(watcher), member),
            [this](sd_bus_message*) { ask(); });
    }
    ask();
}

void TrayHost::ask()
{
    const BusMessage call =
        m_session->newQuestion({watcher, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get"});
    if (!call || sd_bus_message_append(call.get(), "ss", watcher, "IsStatusNotifierHostRegistered") < 0) {
        return;
    }
    m_session->ask(call, [this](sd_bus_message* answer) {
        int isThere = 0;
        note(answer != nullptr && sd_bus_message_read(answer, "v", "b", &isThere) > 0 && isThere != 0);
    });
}

void TrayHost::note(bool isThere)
{
    if (m_isThere != isThere) {
        m_isThere = isThere;
        Q_EMIT changed();
    }
}

}  // namespace vantiro
