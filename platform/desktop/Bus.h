// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

struct sd_bus;
struct sd_bus_message;

namespace vantiro {

struct BusDeleter {
    void operator()(sd_bus* bus) const;
};
struct BusMessageDeleter {
    void operator()(sd_bus_message* message) const;
};

/// A connection to a message bus; whatever it holds there ends with it.
using Bus = std::unique_ptr<sd_bus, BusDeleter>;
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageDeleter>;

enum class BusKind {
    system,
    session,
};

/// Nothing if there is no such bus.
[[nodiscard]] Bus openBus(BusKind kind);

/// There is such a bus, and it takes in nobody within half a second.
[[nodiscard]] bool isStuck(BusKind kind);

/// A method of an object of a service, to be called.
struct BusMethod {
    const char* service;
    const char* path;
    const char* interface;
    const char* name;
};

/// A call without its arguments yet.
[[nodiscard]] BusMessage newCall(const Bus& bus, const BusMethod& method);
/// The answer within one second, or nothing.
[[nodiscard]] BusMessage send(const Bus& bus, const BusMessage& call);

}  // namespace vantiro
