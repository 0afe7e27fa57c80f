// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/Scheduler.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

namespace vantiro {

/// Brings the progress of background work to the main thread, as often as an eye can follow: what comes sooner is left
/// out. Any thread.
class ProgressMail {
public:
    using Show = std::function<void(double fraction)>;

    static constexpr std::chrono::nanoseconds shortestPause = std::chrono::nanoseconds(std::chrono::seconds(1)) / 30;

    /// `show` is called on the main thread, and may be copied and dropped on any.
    ProgressMail(std::move_only_function<void(Scheduler::Task)> mailbox, Show show);

    void tell(double fraction);

private:
    std::mutex m_mutex;
    std::move_only_function<void(Scheduler::Task)> m_mailbox;
    Show m_show;
    std::optional<std::chrono::steady_clock::time_point> m_told;
};

}  // namespace vantiro
