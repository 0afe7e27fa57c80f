// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace vantiro {

/// Time and threads as the model sees them, so that a test can hold both in its hands.
class Scheduler {
public:
    using Task = std::move_only_function<void()>;
    using Moment = std::chrono::steady_clock::time_point;

    /// A repeating timer; destroying it stops it, also from inside its own tick.
    class Timer {
    public:
        virtual ~Timer() = default;

        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;

    protected:
        Timer() = default;
    };

    /// How long background work may take.
    enum class Work {
        brief,    ///< Some seconds at the most. It may use what belongs to the program; the end of the scheduler waits.
        lasting,  ///< As long as it wants, on a thread of its own, with copies alone: nobody waits for its end.
        patient,  ///< As lasting work, and behind everything else that wants the processor or the disk.
    };

    virtual ~Scheduler() = default;

    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    /// A clock that never jumps.
    [[nodiscard]] virtual Moment now() const = 0;
    /// The time of day, in UTC.
    [[nodiscard]] virtual QDateTime wallClock() const = 0;
    /// Calls `tick` on the main thread once a period, keeping pace on the average.
    [[nodiscard]] virtual std::unique_ptr<Timer> every(std::chrono::nanoseconds period, Task tick) = 0;
    /// Runs the task on the main thread, soon but never inside this call. Any thread.
    virtual void post(Task task) = 0;
    /// Runs the job on another thread.
    virtual void runElsewhere(Work work, Task job) = 0;

    /// Runs `job` on another thread, then hands its result to `done` on the main thread. If the scheduler ends before,
    /// `done` is never called.
    template <class Job, class Done>
    void background(Work work, Job job, Done done)
    {
        runElsewhere(work, [mail = mailbox(), job = std::move(job), done = std::move(done)]() mutable {
            mail([result = job(), done = std::move(done)]() mutable { done(std::move(result)); });
        });
    }

    /// post() for work that may outlast the scheduler: what is mailed then is dropped. The mailbox may be used on any
    /// thread, by one at a time.
    [[nodiscard]] virtual std::move_only_function<void(Task)> mailbox() = 0;

protected:
    Scheduler() = default;
};

}  // namespace vantiro
