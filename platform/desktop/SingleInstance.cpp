// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/SingleInstance.h"

#include "platform/desktop/ApplicationId.h"

#include <chrono>
#include <cstring>
#include <utility>

#include <systemd/sd-bus.h>

namespace vantiro {

namespace {

    using namespace std::chrono;
    using Answer = RunningApplication::Answer;

    /// A program that is just starting on a slow machine has not served its bus yet.
    constexpr milliseconds handOverPatience{10'000};
    /// More than anybody opens by hand.
    constexpr qsizetype mostLinks = 16;
    constexpr qsizetype longestToken = 1024;

    enum class NameClaim {
        owned,
        taken,
        impossible,
    };

    NameClaim claimName(const Bus& bus)
    {
        constexpr std::uint32_t doNotQueue = 4;
        constexpr std::uint32_t isOwner = 1;
        constexpr std::uint32_t exists = 3;
        const BusMessage call =
            newCall(bus, {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName"});
        if (!call || sd_bus_message_append(call.get(), "su", applicationId, doNotQueue) < 0) {
            return NameClaim::impossible;
        }
        const BusMessage answer = send(bus, call);
        std::uint32_t result = 0;
        if (!answer || sd_bus_message_read(answer.get(), "u", &result) < 0) {
            return NameClaim::impossible;
        }
        return result == isOwner ? NameClaim::owned : result == exists ? NameClaim::taken : NameClaim::impossible;
    }

    /// Reads a dictionary of strings and variants up to its end.
    StartTokens readTokens(sd_bus_message* call)
    {
        StartTokens tokens;
        if (sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "{sv}") < 0) {
            return tokens;
        }
        const char* name = nullptr;
        while (sd_bus_message_enter_container(call, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0
            && sd_bus_message_read(call, "s", &name) > 0) {
            const char* contents = nullptr;
            const char* text = nullptr;
            if (sd_bus_message_peek_type(call, nullptr, &contents) > 0 && std::strcmp(contents, "s") == 0
                && sd_bus_message_read(call, "v", "s", &text) > 0) {
                const QString token = QString::fromUtf8(text).left(longestToken);
                if (std::strcmp(name, "activation-token") == 0) {
                    tokens.activation = token;
                } else if (std::strcmp(name, "desktop-startup-id") == 0) {
                    tokens.startup = token;
                }
            } else {
                sd_bus_message_skip(call, "v");
            }
            sd_bus_message_exit_container(call);
        }
        return tokens;
    }

    int activate(sd_bus_message* call, void* instance, sd_bus_error* /*error*/)
    {
        Q_EMIT static_cast<SingleInstance*>(instance)->activated(readTokens(call));
        return sd_bus_reply_method_return(call, "");
    }

    int openLinks(sd_bus_message* call, void* instance, sd_bus_error* /*error*/)
    {
        QStringList links;
        if (sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "s") >= 0) {
            const char* link = nullptr;
            while (sd_bus_message_read(call, "s", &link) > 0) {
                if (links.size() < mostLinks) {
                    links.append(QString::fromUtf8(link));
                }
            }
            sd_bus_message_exit_container(call);
        }
        Q_EMIT static_cast<SingleInstance*>(instance)->opened(links, readTokens(call));
        return sd_bus_reply_method_return(call, "");
    }

    int activateAction(sd_bus_message* call, void* instance, sd_bus_error* /*error*/)
    {
        const char* action = nullptr;
        if (sd_bus_message_read(call, "s", &action) < 0 || std::strcmp(action, RunningApplication::toggleAction) != 0) {
            return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "There is no such action.");
        }
        Q_EMIT static_cast<SingleInstance*>(instance)->toggleWanted();
        return sd_bus_reply_method_return(call, "");
    }

// The macros of the C header convert and cast as they like.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
    const sd_bus_vtable applicationTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("Activate", "a{sv}", "", activate, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Open", "asa{sv}", "", openLinks, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("ActivateAction", "sava{sv}", "", activateAction, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
#pragma GCC diagnostic pop

}  // namespace

StartClaim StartClaim::make(const QStringList& links)
{
    Bus bus = RunningApplication::session();
    const StartTokens tokens = StartTokens::fromEnvironment();
    const auto end = steady_clock::now() + handOverPatience;
    // The one that has the name may be just ending.
    while (bus) {
        switch (claimName(bus)) {
        case NameClaim::owned:
            return {.bus = std::move(bus)};
        case NameClaim::impossible:
            return {};
        case NameClaim::taken:
            break;
        }
        const auto left = duration_cast<milliseconds>(end - steady_clock::now());
        const Answer answer = left.count() > 0
            ? RunningApplication::open(bus, links.first(std::min(links.size(), mostLinks)), tokens, left)
            : Answer::silent;
        if (answer != Answer::absent) {
            return {.outcome = answer == Answer::done ? Outcome::handedOver : Outcome::unanswered, .bus = nullptr};
        }
    }
    return {};
}

SingleInstance::SingleInstance(Bus bus) : m_link(bus ? BusLink::adopt(std::move(bus)) : nullptr)
{
    if (m_link) {
        sd_bus_add_object_vtable(
            m_link->bus(), nullptr, RunningApplication::path, RunningApplication::interface, applicationTable, this);
    }
}

SingleInstance::~SingleInstance() = default;

}  // namespace vantiro
