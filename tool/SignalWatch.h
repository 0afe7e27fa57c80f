// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/FileDescriptor.h"

#include <chrono>
#include <csignal>

namespace vantiro {

/// Turns SIGINT and SIGTERM into something that a loop can ask for, so that a take is always closed in order; SIGHUP,
/// SIGPIPE and SIGXFSZ are ignored from here on. Made before any other thread, which then inherits the blocked signals.
/// After its end a stop ends the program again; the stops until then were for those who asked.
class SignalWatch {
public:
    SignalWatch();
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    /// A stop was asked for, now or earlier. Any thread.
    [[nodiscard]] bool stopRequested();
    /// Waits for a stop, at most so long, and returns stopRequested().
    bool wait(std::chrono::milliseconds limit);
    /// Readable once a stop was asked for, for loops that wait by themselves.
    [[nodiscard]] int descriptor() const { return m_descriptor.get(); }

private:
    sigset_t m_before;
    FileDescriptor m_descriptor;
};

}  // namespace vantiro
