// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/SignalWatch.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace vantiro {

SignalWatch::SignalWatch()
{
    sigemptyset(&m_before);
    for (const int ignored : {SIGHUP, SIGPIPE, SIGXFSZ}) {
        std::signal(ignored, SIG_IGN);
    }
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &stops, &m_before);
    m_descriptor = FileDescriptor(::signalfd(-1, &stops, SFD_CLOEXEC | SFD_NONBLOCK));
}

SignalWatch::~SignalWatch()
{
    signalfd_siginfo stop;
    while (::read(m_descriptor.get(), &stop, sizeof(stop)) > 0) {
    }
    ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

bool SignalWatch::stopRequested()
{
    return wait(std::chrono::milliseconds(0));
}

bool SignalWatch::wait(std::chrono::milliseconds limit)
{
    // The signal is not read before the end, so that it stays pending for everybody who asks.
    pollfd waiting{.fd = m_descriptor.get(), .events = POLLIN, .revents = 0};
    return ::poll(&waiting, 1, static_cast<int>(limit.count())) > 0;
}

}  // namespace vantiro
