// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/QtScheduler.h"

#include "core/foundation/ThreadPriority.h"

#include <QObject>
#include <QTimer>

#include <mutex>
#include <thread>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    /// Brief work waits more than it computes, so there may be more of it at once than there are processors.
    constexpr int briefThreads = 8;

    /// Ticks at multiples of the period, so that a period that is no whole number of milliseconds is kept on average.
    class PacedTimer final : public Scheduler::Timer {
    public:
        PacedTimer(std::chrono::nanoseconds period, Scheduler::Task tick)
            : m_period(period)
            , m_tick(std::make_shared<Scheduler::Task>(std::move(tick)))
            , m_next(std::chrono::steady_clock::now())
        {
            m_timer.setSingleShot(true);
            m_timer.setTimerType(Qt::PreciseTimer);
            QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
                arm();
                // The tick may destroy this timer, and with it the last owner of what runs.
                const std::shared_ptr<Scheduler::Task> running = m_tick;
                (*running)();
            });
            arm();
        }

    private:
        void arm()
        {
            const auto now = std::chrono::steady_clock::now();
            // After a suspended laptop or a stalled loop the missed ticks are not made up for.
            m_next = std::max(m_next + m_period, now);
            m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(m_next - now));
        }

        std::chrono::nanoseconds m_period;
        std::shared_ptr<Scheduler::Task> m_tick;
        std::chrono::steady_clock::time_point m_next;
        QTimer m_timer;
    };

}  // namespace

/// The way back to the main thread, which the threads share with the scheduler and may keep longer than it lives.
struct QtScheduler::Mail {
    std::mutex mutex;
    std::unique_ptr<QObject> receiver = std::make_unique<QObject>();

    void deliver(Task task)
    {
        const std::lock_guard lock(mutex);
        if (receiver) {
            // The event's function has to be copyable.
            QMetaObject::invokeMethod(
                receiver.get(), [shared = std::make_shared<Task>(std::move(task))] { (*shared)(); },
                Qt::QueuedConnection);
        }
    }
};

QtScheduler::QtScheduler() : m_mail(std::make_shared<Mail>())
{
    m_pool.setMaxThreadCount(briefThreads);
}

QtScheduler::~QtScheduler()
{
    m_pool.waitForDone();
    const std::lock_guard lock(m_mail->mutex);
    m_mail->receiver.reset();
}

Scheduler::Moment QtScheduler::now() const
{
    return std::chrono::steady_clock::now();
}

QDateTime QtScheduler::wallClock() const
{
    return QDateTime::currentDateTimeUtc();
}

std::unique_ptr<Scheduler::Timer> QtScheduler::every(std::chrono::nanoseconds period, Task tick)
{
    return std::make_unique<PacedTimer>(period, std::move(tick));
}

void QtScheduler::post(Task task)
{
    m_mail->deliver(std::move(task));
}

void QtScheduler::runElsewhere(Work work, Task job)
{
    switch (work) {
    case Work::brief:
        m_pool.start([shared = std::make_shared<Task>(std::move(job))] { (*shared)(); });
        break;
    case Work::lasting:
        std::thread(std::move(job)).detach();
        break;
    case Work::patient:
        std::thread([patientJob = std::move(job)]() mutable {
            standBackForGood();
            patientJob();
        }).detach();
        break;
    }
}

std::move_only_function<void(Scheduler::Task)> QtScheduler::mailbox()
{
    return [mail = m_mail](Task task) { mail->deliver(std::move(task)); };
}

}  // namespace vantiro
