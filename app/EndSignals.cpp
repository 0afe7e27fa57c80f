// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/EndSignals.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

#include <sys/eventfd.h>
#include <unistd.h>

namespace vantiro {

namespace {

    /// Never closed: a signal may come until the very end.
    std::atomic<int> endEvent = -1;
    static_assert(std::atomic<int>::is_always_lock_free);

    void note(int /*signal*/)
    {
        const int before = errno;
        constexpr std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(endEvent.load(), &one, sizeof one);
        errno = before;
    }

    int install()
    {
        endEvent = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        std::signal(SIGPIPE, SIG_IGN);
        for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
            struct sigaction action{};
            struct sigaction before{};
            action.sa_handler = note;
            action.sa_flags = SA_RESTART;
            ::sigemptyset(&action.sa_mask);
            ::sigaction(number, nullptr, &before);
            if (number != SIGHUP || before.sa_handler != SIG_IGN) {
                ::sigaction(number, &action, nullptr);
            }
        }
        return endEvent;
    }

}  // namespace

EndSignals::EndSignals() : m_notifier(install(), QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] {
        std::uint64_t count = 0;
        if (::read(endEvent, &count, sizeof count) > 0) {
            Q_EMIT received();
        }
    });
}

}  // namespace vantiro
