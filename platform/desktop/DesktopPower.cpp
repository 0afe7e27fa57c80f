// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/DesktopPower.h"

#include "core/foundation/FileDescriptor.h"
#include "core/foundation/Log.h"
#include "platform/desktop/ApplicationId.h"
#include "platform/desktop/Bus.h"

#include <cstdint>
#include <string>

#include <fcntl.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace vantiro {

namespace {

    constexpr const char* logindService = "org.freedesktop.login1";
    constexpr const char* logindPath = "/org/freedesktop/login1";
    constexpr const char* logindInterface = "org.freedesktop.login1.Manager";
    /// The session manager's flag for "do not suspend".
    constexpr std::uint32_t inhibitSuspend = 4;

    /// logind's lock lives as long as this descriptor, the session manager's as long as the connection.
    class DesktopInhibition final : public SleepInhibition {
    public:
        DesktopInhibition(FileDescriptor logind, Bus session)
            : m_logind(std::move(logind))
            , m_session(std::move(session))
        { }

    private:
        FileDescriptor m_logind;
        Bus m_session;
    };

    FileDescriptor inhibitAtLogind(const QString& reason)
    {
        const Bus bus = openBus(BusKind::system);
        const BusMessage call = bus ? newCall(bus, {logindService, logindPath, logindInterface, "Inhibit"}) : nullptr;
        // Closing the lid suspends through a plain block of `sleep`, so the switch is named too.
        if (!call
            || sd_bus_message_append(
                   call.get(), "ssss", "sleep:handle-lid-switch", "Vantiro", reason.toUtf8().constData(), "block")
                < 0) {
            return {};
        }
        const BusMessage answer = send(bus, call);
        int descriptor = -1;
        if (!answer || sd_bus_message_read(answer.get(), "h", &descriptor) < 0) {
            return {};
        }
        // The message's own descriptor ends with the message.
        return FileDescriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
    }

    Bus inhibitAtSession(const QString& reason)
    {
        Bus bus = openBus(BusKind::session);
        const BusMessage call = bus
            ? newCall(
                  bus, {"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager", "Inhibit"})
            : nullptr;
        if (!call
            || sd_bus_message_append(
                   call.get(), "susu", applicationId, std::uint32_t{0}, reason.toUtf8().constData(), inhibitSuspend)
                < 0) {
            return nullptr;
        }
        return send(bus, call) ? std::move(bus) : nullptr;
    }

    bool namesType(const char* types, const QString& type)
    {
        return QString::fromUtf8(types).split(QLatin1Char(':')).contains(type);
    }

}  // namespace

std::unique_ptr<SleepInhibition> DesktopPower::inhibitSleep(const QString& reason)
{
    FileDescriptor logind = inhibitAtLogind(reason);
    if (!logind.isOpen()) {
        logLine(QStringLiteral("logind did not grant a lock against sleep"));
    }
    Bus session = inhibitAtSession(reason);
    if (!session) {
        logLine(QStringLiteral("the session manager did not grant a lock against sleep"));
    }
    if (!logind.isOpen() && !session) {
        return nullptr;
    }
    return std::make_unique<DesktopInhibition>(std::move(logind), std::move(session));
}

QStringList DesktopPower::inhibitions(const QString& type)
{
    const Bus bus = openBus(BusKind::system);
    const BusMessage call =
        bus ? newCall(bus, {logindService, logindPath, logindInterface, "ListInhibitors"}) : nullptr;
    const BusMessage answer = call ? send(bus, call) : nullptr;
    QStringList reasons;
    if (!answer || sd_bus_message_enter_container(answer.get(), SD_BUS_TYPE_ARRAY, "(ssssuu)") < 0) {
        return reasons;
    }
    const char* what = nullptr;
    const char* who = nullptr;
    const char* why = nullptr;
    const char* mode = nullptr;
    std::uint32_t user = 0;
    std::uint32_t process = 0;
    while (sd_bus_message_read(answer.get(), "(ssssuu)", &what, &who, &why, &mode, &user, &process) > 0) {
        if (process == static_cast<std::uint32_t>(::getpid()) && namesType(what, type)) {
            reasons << QString::fromUtf8(why);
        }
    }
    return reasons;
}

bool DesktopPower::moveToOwnScope()
{
    const Bus bus = openBus(BusKind::session);
    const BusMessage call = bus ? newCall(bus,
                                      {"org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                          "org.freedesktop.systemd1.Manager", "StartTransientUnit"})
                                : nullptr;
    const std::string unit = "vantiro-recorder-" + std::to_string(::getpid()) + ".scope";
    if (!call || sd_bus_message_append(call.get(), "ss", unit.c_str(), "fail") < 0
        || sd_bus_message_append(call.get(), "a(sv)", 3, "Description", "s", "Vantiro: a take is being recorded",
               "CollectMode", "s", "inactive-or-failed", "PIDs", "au", 1, static_cast<std::uint32_t>(::getpid()))
            < 0
        || sd_bus_message_append(call.get(), "a(sa(sv))", 0) < 0) {
        return false;
    }
    return send(bus, call) != nullptr;
}

}  // namespace vantiro
