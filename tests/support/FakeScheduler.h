// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/Scheduler.h"

#include <chrono>
#include <deque>
#include <memory>
#include <vector>

namespace vantiro::test {

/// Time that moves only as the test says, and background work that runs only when the test says, on its own thread.
/// Everything else belongs to the test's thread as well, but for posting. Outlives its timers.
class FakeScheduler final : public Scheduler {
public:
    FakeScheduler();
    ~FakeScheduler() override;

    FakeScheduler(const FakeScheduler&) = delete;
    FakeScheduler& operator=(const FakeScheduler&) = delete;

    [[nodiscard]] Moment now() const override { return m_now; }
    [[nodiscard]] QDateTime wallClock() const override;
    [[nodiscard]] std::unique_ptr<Timer> every(std::chrono::nanoseconds period, Task tick) override;
    void post(Task task) override;
    void runElsewhere(Work work, Task job) override;
    [[nodiscard]] std::move_only_function<void(Task)> mailbox() override;

    /// Moves the clock on. Timers tick at their moments, and what is posted runs before the clock moves further.
    void advance(std::chrono::nanoseconds duration);
    /// Runs what was posted, and what that posts, without the clock.
    void runPosted();
    /// Runs the background jobs that wait by now, then hands over their results.
    void runBackground();
    /// The same until nobody waits for anything but time.
    void settle();

private:
    struct Mail;
    class FakeTimer;

    Moment m_now;
    std::shared_ptr<Mail> m_mail;
    std::deque<Task> m_jobs;
    std::vector<FakeTimer*> m_timers;
};

}  // namespace vantiro::test
