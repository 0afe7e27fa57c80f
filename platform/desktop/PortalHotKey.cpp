// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/PortalHotKey.h"

#include "core/foundation/Log.h"
#include "platform/desktop/ApplicationId.h"

#include <QCoreApplication>

#include <cstdint>
#include <cstring>
#include <utility>

#include <systemd/sd-bus.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    constexpr const char* portal = "org.freedesktop.portal.Desktop";
    constexpr const char* portalObject = "/org/freedesktop/portal/desktop";
    constexpr const char* shortcuts = "org.freedesktop.portal.GlobalShortcuts";
    constexpr const char* shortcutName = "record";
    constexpr const char* wantedKeys = "CTRL+ALT+LOGO+r";

    void tellOfNone(const QString& reason)
    {
        static bool told = false;
        if (!std::exchange(told, true)) {
            logLine(u"There is no hot key: "_s + reason);
        }
    }

}  // namespace

std::unique_ptr<PortalHotKey> PortalHotKey::make()
{
    auto link = BusLink::open(BusKind::session);
    return link ? std::unique_ptr<PortalHotKey>(new PortalHotKey(std::move(link))) : nullptr;
}

PortalHotKey::PortalHotKey(std::unique_ptr<BusLink> link) : m_link(std::move(link))
{
    m_link->follow(u"type='signal',sender='%1',path='%2',interface='%3',member='Activated'"_s.arg(
                       QLatin1StringView(portal), QLatin1StringView(portalObject), QLatin1StringView(shortcuts)),
        [this](sd_bus_message* signal) {
            const char* session = nullptr;
            const char* name = nullptr;
            if (signal != nullptr && sd_bus_message_read(signal, "os", &session, &name) > 0 && m_session == session
                && std::strcmp(name, shortcutName) == 0) {
                Q_EMIT pressed();
            }
        });
    introduce();
}

PortalHotKey::~PortalHotKey()
{
    if (!m_session.isEmpty()) {
        const BusMessage call =
            m_link->newQuestion({portal, m_session.constData(), "org.freedesktop.portal.Session", "Close"});
        if (call) {
            sd_bus_message_set_expect_reply(call.get(), 0);
            sd_bus_send(nullptr, call.get(), nullptr);
        }
    }
}

/// A portal knows a program in a sandbox; of any other one it learns the name like this, as far as it cares. It has to
/// come first, and whatever the answer is, the bus has answered by then.
void PortalHotKey::introduce()
{
    BusMessage call = m_link->newRequest({portal, portalObject, "org.freedesktop.host.portal.Registry", "Register"});
    if (call && sd_bus_message_append(call.get(), "sa{sv}", applicationId, 0) < 0) {
        call.reset();
    }
    m_link->ask(call, [this](sd_bus_message*) { createSession(); });
}

/// The portal may answer before it has told the name of what answers: that name is made by a rule from the connection's
/// own and a token, so that one can listen first.
PortalHotKey::Request PortalHotKey::newRequest()
{
    const char* unique = nullptr;
    // On a bus that is not ready the question would wait.
    if (sd_bus_is_ready(m_link->bus()) <= 0 || sd_bus_get_unique_name(m_link->bus(), &unique) < 0) {
        return {};
    }
    const QString sender = QString::fromLatin1(unique).remove(u':').replace(u'.', u'_');
    const QString token = u"vantiro%1"_s.arg(++m_requests);
    return {.token = token, .path = u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(sender, token)};
}

void PortalHotKey::ask(const BusMessage& call, const Request& request, void (PortalHotKey::*next)())
{
    m_link->follow(
        u"type='signal',sender='%1',path='%2',interface='org.freedesktop.portal.Request',member='Response'"_s.arg(
            QLatin1StringView(portal), request.path),
        [this, next](sd_bus_message* signal) {
            std::uint32_t response = 1;
            if (signal == nullptr || sd_bus_message_read(signal, "u", &response) <= 0 || response != 0) {
                tellOfNone(u"the desktop does not grant it."_s);
                return;
            }
            if (next == nullptr || sd_bus_message_enter_container(signal, SD_BUS_TYPE_ARRAY, "{sv}") <= 0) {
                return;
            }
            const char* name = nullptr;
            while (sd_bus_message_enter_container(signal, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0
                && sd_bus_message_read(signal, "s", &name) > 0) {
                const char* session = nullptr;
                if (std::strcmp(name, "session_handle") == 0 && sd_bus_message_read(signal, "v", "s", &session) > 0) {
                    m_session = session;
                    (this->*next)();
                    return;
                }
                sd_bus_message_skip(signal, "v");
                sd_bus_message_exit_container(signal);
            }
        });
    m_link->ask(call, [](sd_bus_message* answer) {
        if (answer == nullptr) {
            tellOfNone(u"this desktop has no portal for it."_s);
        }
    });
}

void PortalHotKey::createSession()
{
    const Request request = newRequest();
    if (request.path.isEmpty()) {
        tellOfNone(u"the session bus does not answer."_s);
        return;
    }
    const BusMessage call = m_link->newRequest({portal, portalObject, shortcuts, "CreateSession"});
    const QByteArray token = request.token.toLatin1();
    if (call
        && sd_bus_message_append(call.get(), "a{sv}", 2, "handle_token", "s", token.constData(), "session_handle_token",
               "s", token.constData())
            >= 0) {
        ask(call, request, &PortalHotKey::bind);
    }
}

void PortalHotKey::bind()
{
    const Request request = newRequest();
    const BusMessage call = m_link->newRequest({portal, portalObject, shortcuts, "BindShortcuts"});
    const QByteArray words = QCoreApplication::translate("PortalHotKey", "Start or stop a take").toUtf8();
    if (call
        && sd_bus_message_append(call.get(), "oa(sa{sv})sa{sv}", m_session.constData(), 1, shortcutName, 2,
               "description", "s", words.constData(), "preferred_trigger", "s", wantedKeys, "", 1, "handle_token", "s",
               request.token.toLatin1().constData())
            >= 0) {
        ask(call, request, nullptr);
    }
}

}  // namespace vantiro
