// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <memory>

#include <sys/types.h>

namespace vantiro {

/// A child process and what it costs the machine.
class MeasuredProcess {
public:
    /// Runs a program, which is looked for as a shell would; what it prints goes to the file at `log`. The failure is a
    /// SystemError.
    [[nodiscard]] static Result<std::unique_ptr<MeasuredProcess>> start(
        const QString& program, const QStringList& arguments, const QString& log);

    /// Kills the process if it still runs.
    ~MeasuredProcess();

    MeasuredProcess(const MeasuredProcess&) = delete;
    MeasuredProcess& operator=(const MeasuredProcess&) = delete;

    /// Processor time of all its threads so far, in the program and in the system on its behalf. It runs.
    [[nodiscard]] Result<std::chrono::nanoseconds> processorTime() const;
    /// Memory that it shares with nobody, in bytes: pages that no other process maps, written to or not. It runs.
    [[nodiscard]] Result<std::int64_t> privateBytes() const;

    /// Asks it to finish (SIGINT), waits, and returns the processor time of its whole life. A failure if it does not
    /// end within 15 seconds, or if it ends by a signal. Once.
    [[nodiscard]] Result<std::chrono::nanoseconds> finish();

private:
    MeasuredProcess(pid_t pid, QString name) : m_pid(pid), m_name(std::move(name)) { }

    pid_t m_pid;
    QString m_name;
};

}  // namespace vantiro
