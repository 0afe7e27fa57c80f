// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/guard/SystemCallTrap.h"

#include "tests/guard/CallbackGuard.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include <linux/prctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

namespace vantiro::callbackGuard {

namespace {

    // The kernel reads this byte at each system call of the thread. It lies in the memory that every thread is born
    // with, since memory that is fetched on first use would be an allocation inside the callback.
    constinit thread_local volatile char selector __attribute__((tls_model("initial-exec"))) =
        SYSCALL_DISPATCH_FILTER_ALLOW;
    constinit thread_local bool isPrepared __attribute__((tls_model("initial-exec"))) = false;
    constinit std::atomic<bool> isMissing{false};

    /// The system's own form of an action, which tells where a handler returns to.
    struct KernelAction {
        void* handler;
        unsigned long flags;
        void* restorer;
        unsigned long mask;
    };

    /// Long enough for the two instructions that return from a handler, and shorter than any function behind them.
    constexpr unsigned long returnBytes = 16;

    void handle(int, siginfo_t* info, void* context) noexcept
    {
        selector = SYSCALL_DISPATCH_FILTER_ALLOW;
        const int number = info->si_syscall;
        if (number != SYS_clock_gettime) {
            std::array<char, 32> words{};
            std::snprintf(words.data(), words.size(), "system call %d", number);
            violated(words.data());
        }
        greg_t* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
        const long result = ::syscall(SYS_clock_gettime, registers[REG_RDI], registers[REG_RSI]);
        registers[REG_RAX] = result == 0 ? 0 : -errno;
        selector = SYSCALL_DISPATCH_FILTER_BLOCK;
    }

    /// Where handlers return from; null if that cannot be found out.
    void* installHandler() noexcept
    {
        struct sigaction action{};
        action.sa_sigaction = handle;
        action.sa_flags = SA_SIGINFO;
        KernelAction installed{};
        const bool isInstalled = ::sigaction(SIGSYS, &action, nullptr) == 0
            && ::syscall(SYS_rt_sigaction, SIGSYS, nullptr, &installed, sizeof installed.mask) == 0;
        return isInstalled ? installed.restorer : nullptr;
    }

}  // namespace

void prepareSystemCallTrap() noexcept
{
    if (isPrepared) {
        return;
    }
    isPrepared = true;
    // The kernel ends a process for a trap whose signal is blocked, without a word of ours.
    sigset_t trap;
    ::sigemptyset(&trap);
    ::sigaddset(&trap, SIGSYS);
    ::pthread_sigmask(SIG_UNBLOCK, &trap, nullptr);
    void* restorer = installHandler();
    // The return from a handler is a system call too, and has to pass.
    const bool isWatched = restorer != nullptr
        && ::prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, restorer, returnBytes, &selector) == 0;
    if (!isWatched) {
        isMissing.store(true);
    }
}

bool isSystemCallTrapMissing() noexcept
{
    return isMissing.load();
}

void forbidSystemCalls() noexcept
{
    selector = SYSCALL_DISPATCH_FILTER_BLOCK;
}

void allowSystemCalls() noexcept
{
    selector = SYSCALL_DISPATCH_FILTER_ALLOW;
}

}  // namespace vantiro::callbackGuard
