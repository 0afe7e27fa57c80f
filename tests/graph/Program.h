// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <chrono>

namespace vantiro::test {

/// A program that the test started, with the test's environment and no input. Its end kills it.
class Program {
public:
    /// What a run left.
    struct Result {
        int status = -1;  ///< The exit code; -1 if it has not ended, or by a signal.
        QString output;
        QString errors;
    };

    /// Starts it; a failure fails the test.
    explicit Program(const QString& path, const QStringList& arguments);

    [[nodiscard]] qint64 pid() const { return m_pid; }
    [[nodiscard]] bool isRunning();
    /// Nothing happens once it has ended.
    void signal(int number);
    /// Waits for its end. Being there still after the limit fails the test.
    Result wait(std::chrono::milliseconds limit = std::chrono::seconds(20));

private:
    QProcess m_process;
    qint64 m_pid = 0;
};

}  // namespace vantiro::test
