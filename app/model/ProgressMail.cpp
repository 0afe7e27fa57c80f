// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/ProgressMail.h"

#include <utility>

namespace vantiro {

ProgressMail::ProgressMail(std::move_only_function<void(Scheduler::Task)> mailbox, Show show)
    : m_mailbox(std::move(mailbox))
    , m_show(std::move(show))
{ }

void ProgressMail::tell(double fraction)
{
    const std::lock_guard lock(m_mutex);
    const auto now = std::chrono::steady_clock::now();
    if (!m_told || now - *m_told >= shortestPause) {
        m_told = now;
        m_mailbox([show = m_show, fraction] { show(fraction); });
    }
}

}  // namespace vantiro
