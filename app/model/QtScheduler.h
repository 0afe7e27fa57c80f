// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/Scheduler.h"

#include <QThreadPool>

namespace vantiro {

/// The real clock, the event loop of the thread that made it, and threads.
class QtScheduler final : public Scheduler {
public:
    QtScheduler();
    /// Waits for brief work; what it hands back is dropped.
    ~QtScheduler() override;

    QtScheduler(const QtScheduler&) = delete;
    QtScheduler& operator=(const QtScheduler&) = delete;

    [[nodiscard]] Moment now() const override;
    [[nodiscard]] QDateTime wallClock() const override;
    [[nodiscard]] std::unique_ptr<Timer> every(std::chrono::nanoseconds period, Task tick) override;
    void post(Task task) override;
    void runElsewhere(Work work, Task job) override;
    [[nodiscard]] std::move_only_function<void(Task)> mailbox() override;

private:
    struct Mail;

    std::shared_ptr<Mail> m_mail;
    QThreadPool m_pool;
};

}  // namespace vantiro
