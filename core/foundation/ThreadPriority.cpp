// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/ThreadPriority.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantiro {

void standBackForGood() noexcept
{
    // The kernel keeps a niceness a thread and takes a thread's number for a process's.
    constexpr int niceness = 10;
    const pid_t thread = ::gettid();
    static_cast<void>(::setpriority(PRIO_PROCESS, static_cast<id_t>(thread), niceness));

    // From ioprio_set(2), for which the C library has no call. Not the idle class: on a busy disk it would never end.
    constexpr int oneThread = 1;
    constexpr int bestEffort = 2;
    constexpr int classShift = 13;
    constexpr int lowestLevel = 7;
    static_cast<void>(::syscall(SYS_ioprio_set, oneThread, thread, (bestEffort << classShift) | lowestLevel));
}

}  // namespace vantiro
