// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Bus.h"

#include <chrono>
#include <cstdint>

#include <systemd/sd-bus.h>

namespace vantiro {

namespace {

    constexpr std::uint64_t answerMicroseconds = 1'000'000;
    constexpr std::chrono::milliseconds helloPatience{500};

}  // namespace

void BusDeleter::operator()(sd_bus* bus) const
{
    sd_bus_flush_close_unref(bus);
}

void BusMessageDeleter::operator()(sd_bus_message* message) const
{
    sd_bus_message_unref(message);
}

Bus openBus(BusKind kind)
{
    sd_bus* bus = nullptr;
    const int result = kind == BusKind::system ? sd_bus_open_system(&bus) : sd_bus_open_user(&bus);
    return Bus(result < 0 ? nullptr : bus);
}

bool isStuck(BusKind kind)
{
    using Clock = std::chrono::steady_clock;
    const Bus bus = openBus(kind);
    const auto patienceEnds = Clock::now() + helloPatience;
    while (bus != nullptr && sd_bus_is_ready(bus.get()) == 0) {
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(patienceEnds - Clock::now());
        if (left.count() <= 0) {
            // Nothing waits for what was not sent then.
            sd_bus_close(bus.get());
            return true;
        }
        const int done = sd_bus_process(bus.get(), nullptr);
        if (done < 0 || (done == 0 && sd_bus_wait(bus.get(), static_cast<std::uint64_t>(left.count())) < 0)) {
            return false;
        }
    }
    return false;
}

BusMessage newCall(const Bus& bus, const BusMethod& method)
{
    sd_bus_message* call = nullptr;
    const int result =
        sd_bus_message_new_method_call(bus.get(), &call, method.service, method.path, method.interface, method.name);
    return BusMessage(result < 0 ? nullptr : call);
}

BusMessage send(const Bus& bus, const BusMessage& call)
{
    sd_bus_message* answer = nullptr;
    const int result = sd_bus_call(bus.get(), call.get(), answerMicroseconds, nullptr, &answer);
    return BusMessage(result < 0 ? nullptr : answer);
}

}  // namespace vantiro
