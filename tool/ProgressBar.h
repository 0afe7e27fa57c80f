// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <chrono>

namespace vantiro {

/// A bar on standard error for work that takes its time, only if that is a terminal. It appears once the work has
/// lasted a moment, and leaves an empty line when it ends.
class ProgressBar {
public:
    explicit ProgressBar(QString title);
    ~ProgressBar();

    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// How much is done, from 0 to 1. One thread at a time.
    void advance(double part);

private:
    using Clock = std::chrono::steady_clock;

    QString m_title;
    Clock::time_point m_next;
    bool m_isInteractive;
    bool m_isShown = false;
};

}  // namespace vantiro
