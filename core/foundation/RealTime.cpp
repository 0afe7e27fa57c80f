// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/RealTime.h"

#include <thread>

#include <sched.h>

namespace vantiro::realTime {

bool give(pthread_t thread)
{
    // The priority that PipeWire gives to audio threads.
    const sched_param parameters{.sched_priority = 88};
    return ::pthread_setschedparam(thread, SCHED_FIFO | SCHED_RESET_ON_FORK, &parameters) == 0;
}

bool isGranted()
{
    // Only trying tells: it may be a limit, a capability or a control group that forbids it.
    bool result = false;
    std::thread([&result] { result = give(::pthread_self()); }).join();
    return result;
}

}  // namespace vantiro::realTime
