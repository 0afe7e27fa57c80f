// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/FakeScheduler.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>

namespace vantiro::test {

namespace {

    using namespace std::chrono_literals;

    // Far from the beginning of the clock, as on a machine that has run for a while.
    constexpr Scheduler::Moment firstMoment{std::chrono::hours(100)};

}  // namespace

struct FakeScheduler::Mail {
    std::mutex mutex;
    std::deque<Task> tasks;

    void add(Task task)
    {
        const std::lock_guard lock(mutex);
        tasks.push_back(std::move(task));
    }
    std::optional<Task> take()
    {
        const std::lock_guard lock(mutex);
        if (tasks.empty()) {
            return std::nullopt;
        }
        Task task = std::move(tasks.front());
        tasks.pop_front();
        return task;
    }
};

class FakeScheduler::FakeTimer final : public Timer {
public:
    FakeTimer(FakeScheduler& scheduler, std::chrono::nanoseconds period, Task tick)
        : m_scheduler(scheduler)
        , m_period(period)
        , m_tick(std::make_shared<Task>(std::move(tick)))
        , m_next(scheduler.now() + period)
    {
        m_scheduler.m_timers.push_back(this);
    }
    ~FakeTimer() override { std::erase(m_scheduler.m_timers, this); }

    [[nodiscard]] Moment next() const { return m_next; }
    void fire()
    {
        m_next += m_period;
        // The tick may destroy this timer.
        const std::shared_ptr<Task> running = m_tick;
        (*running)();
    }

private:
    FakeScheduler& m_scheduler;
    std::chrono::nanoseconds m_period;
    std::shared_ptr<Task> m_tick;
    Moment m_next;
};

FakeScheduler::FakeScheduler() : m_now(firstMoment), m_mail(std::make_shared<Mail>()) { }

FakeScheduler::~FakeScheduler() = default;

QDateTime FakeScheduler::wallClock() const
{
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(m_now - firstMoment);
    return QDateTime({2026, 9, 19}, {21, 0}, Qt::UTC).addMSecs(passed.count());
}

std::unique_ptr<Scheduler::Timer> FakeScheduler::every(std::chrono::nanoseconds period, Task tick)
{
    return std::make_unique<FakeTimer>(*this, period, std::move(tick));
}

void FakeScheduler::post(Task task)
{
    m_mail->add(std::move(task));
}

void FakeScheduler::runElsewhere(Work, Task job)
{
    m_jobs.push_back(std::move(job));
}

void FakeScheduler::advance(std::chrono::nanoseconds duration)
{
    const Moment end = m_now + duration;
    while (true) {
        runPosted();
        const auto timer = std::ranges::min_element(m_timers, {}, &FakeTimer::next);
        if (timer == m_timers.end() || (*timer)->next() > end) {
            break;
        }
        m_now = (*timer)->next();
        (*timer)->fire();
    }
    m_now = end;
}

void FakeScheduler::runPosted()
{
    while (auto task = m_mail->take()) {
        (*task)();
    }
}

void FakeScheduler::runBackground()
{
    runPosted();
    std::deque<Task> jobs = std::exchange(m_jobs, {});
    for (Task& job : jobs) {
        job();
    }
    runPosted();
}

void FakeScheduler::settle()
{
    do {
        runBackground();
    } while (!m_jobs.empty());
}

std::move_only_function<void(Scheduler::Task)> FakeScheduler::mailbox()
{
    return [mail = m_mail](Task task) { mail->add(std::move(task)); };
}

}  // namespace vantiro::test
