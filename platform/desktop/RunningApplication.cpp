// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/RunningApplication.h"

#include "platform/desktop/ApplicationId.h"

#include <QByteArray>

#include <cstdint>

#include <systemd/sd-bus.h>

namespace vantiro {

namespace {

    using namespace std::chrono;

    constexpr milliseconds busPatience{3000};

    /// sd-bus itself waits much longer for a bus that hangs.
    bool answersWithin(sd_bus* bus, milliseconds patience)
    {
        const auto end = steady_clock::now() + patience;
        while (sd_bus_is_ready(bus) == 0) {
            const int result = sd_bus_process(bus, nullptr);
            const auto left = duration_cast<microseconds>(end - steady_clock::now());
            if (result < 0 || left.count() <= 0) {
                return false;
            }
            if (result == 0) {
                sd_bus_wait(bus, static_cast<std::uint64_t>(left.count()));
            }
        }
        return sd_bus_is_ready(bus) > 0;
    }

    bool appendTokens(sd_bus_message* call, const StartTokens& tokens)
    {
        bool works = sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "{sv}") >= 0;
        for (const auto& [name, token] :
            {std::pair{"activation-token", tokens.activation}, {"desktop-startup-id", tokens.startup}}) {
            works = works
                && (token.isEmpty() || sd_bus_message_append(call, "{sv}", name, "s", token.toUtf8().constData()) >= 0);
        }
        return works && sd_bus_message_close_container(call) >= 0;
    }

    bool appendLinks(sd_bus_message* call, const QStringList& links)
    {
        bool works = sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "s") >= 0;
        for (const QString& link : links) {
            works = works && sd_bus_message_append(call, "s", link.toUtf8().constData()) >= 0;
        }
        return works && sd_bus_message_close_container(call) >= 0;
    }

    BusMessage newApplicationCall(const Bus& bus, const char* method)
    {
        BusMessage call =
            newCall(bus, {applicationId, RunningApplication::path, RunningApplication::interface, method});
        if (call) {
            sd_bus_message_set_auto_start(call.get(), 0);
        }
        return call;
    }

    RunningApplication::Answer answerTo(const Bus& bus, const BusMessage& call, milliseconds patience)
    {
        using Answer = RunningApplication::Answer;
        const auto limit = static_cast<std::uint64_t>(duration_cast<microseconds>(patience).count());
        if (sd_bus_call(bus.get(), call.get(), limit, nullptr, nullptr) >= 0) {
            return Answer::done;
        }
        // Whatever the failure was: what counts is whether anybody is there.
        const BusMessage question =
            newCall(bus, {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner"});
        if (!question || sd_bus_message_append(question.get(), "s", applicationId) < 0) {
            return Answer::silent;
        }
        const BusMessage answer = send(bus, question);
        int isThere = 0;
        return answer && sd_bus_message_read(answer.get(), "b", &isThere) > 0 && isThere == 0 ? Answer::absent
                                                                                              : Answer::silent;
    }

}  // namespace

StartTokens StartTokens::fromEnvironment()
{
    return {.activation = qEnvironmentVariable("XDG_ACTIVATION_TOKEN"),
        .startup = qEnvironmentVariable("DESKTOP_STARTUP_ID")};
}

namespace RunningApplication {

    Bus session()
    {
        Bus bus = openBus(BusKind::session);
        if (bus && !answersWithin(bus.get(), busPatience)) {
            // Without the wait for what was not sent yet.
            sd_bus_close_unref(bus.release());
        }
        return bus;
    }

    Answer open(const Bus& bus, const QStringList& links, const StartTokens& tokens, milliseconds patience)
    {
        const BusMessage call = newApplicationCall(bus, links.isEmpty() ? "Activate" : "Open");
        if (!call || (!links.isEmpty() && !appendLinks(call.get(), links)) || !appendTokens(call.get(), tokens)) {
            return Answer::silent;
        }
        return answerTo(bus, call, patience);
    }

    Answer act(const Bus& bus, const char* action, milliseconds patience)
    {
        const BusMessage call = newApplicationCall(bus, "ActivateAction");
        if (!call || sd_bus_message_append(call.get(), "sava{sv}", action, 0, 0) < 0) {
            return Answer::silent;
        }
        return answerTo(bus, call, patience);
    }

}  // namespace RunningApplication

}  // namespace vantiro
