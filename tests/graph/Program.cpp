// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/Program.h"

#include <gtest/gtest.h>

#include <csignal>

namespace vantiro::test {

Program::Program(const QString& path, const QStringList& arguments)
{
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.start(path, arguments);
    EXPECT_TRUE(m_process.waitForStarted()) << qPrintable(path);
    m_pid = m_process.processId();
}

bool Program::isRunning()
{
    // Asking brings the state up to date.
    return !m_process.waitForFinished(0) && m_process.state() == QProcess::Running;
}

void Program::signal(int number)
{
    if (isRunning()) {
        ::kill(static_cast<pid_t>(m_pid), number);
    }
}

Program::Result Program::wait(std::chrono::milliseconds limit)
{
    const bool ended =
        m_process.state() == QProcess::NotRunning || m_process.waitForFinished(static_cast<int>(limit.count()));
    EXPECT_TRUE(ended) << "process " << m_pid << " does not end";
    const bool exited = ended && m_process.exitStatus() == QProcess::NormalExit;
    return {.status = exited ? m_process.exitCode() : -1,
        .output = QString::fromUtf8(m_process.readAllStandardOutput()),
        .errors = QString::fromUtf8(m_process.readAllStandardError())};
}

}  // namespace vantiro::test
