// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/MeasuredProcess.h"

#include "core/foundation/FileDescriptor.h"

#include <QFile>
#include <QRegularExpression>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    constexpr auto finishLimit = 15s;
    constexpr auto finishPause = 5ms;

    std::chrono::nanoseconds span(const timeval& value)
    {
        return std::chrono::seconds(value.tv_sec) + std::chrono::microseconds(value.tv_usec);
    }

    int spawn(pid_t& pid, const QString& program, const QStringList& arguments, int output)
    {
        std::vector<QByteArray> words{QFile::encodeName(program)};
        for (const QString& argument : arguments) {
            words.push_back(argument.toUtf8());
        }
        std::vector<char*> pointers;
        pointers.reserve(words.size() + 1);
        for (QByteArray& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
        const int number = ::posix_spawnp(&pid, pointers.front(), &actions, nullptr, pointers.data(), environ);
        ::posix_spawn_file_actions_destroy(&actions);
        return number;
    }

}  // namespace

Result<std::unique_ptr<MeasuredProcess>> MeasuredProcess::start(
    const QString& program, const QStringList& arguments, const QString& log)
{
    const FileDescriptor output(
        ::open(QFile::encodeName(log).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (!output.isOpen()) {
        return std::unexpected(errnoError(log, errno));
    }
    pid_t pid = 0;
    if (const int number = spawn(pid, program, arguments, output.get()); number != 0) {
        return std::unexpected(errnoError(program, number));
    }
    return std::unique_ptr<MeasuredProcess>(new MeasuredProcess(pid, program));
}

MeasuredProcess::~MeasuredProcess()
{
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
}

Result<std::chrono::nanoseconds> MeasuredProcess::processorTime() const
{
    clockid_t clock = 0;
    timespec used{};
    if (const int number = ::clock_getcpuclockid(m_pid, &clock); number != 0) {
        return std::unexpected(errnoError(m_name, number));
    }
    if (::clock_gettime(clock, &used) != 0) {
        return std::unexpected(errnoError(m_name, errno));
    }
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

Result<std::int64_t> MeasuredProcess::privateBytes() const
{
    QFile file(QStringLiteral("/proc/%1/smaps_rollup").arg(m_pid));
    if (!file.open(QIODevice::ReadOnly)) {
        return captureFailure(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    }
    static const QRegularExpression line(
        QStringLiteral("^Private_(?:Clean|Dirty):\\s+(\\d+) kB$"), QRegularExpression::MultilineOption);
    std::int64_t kibibytes = 0;
    for (auto matches = line.globalMatch(QString::fromLatin1(file.readAll())); matches.hasNext();) {
        kibibytes += matches.next().captured(1).toLongLong();
    }
    return kibibytes * 1024;
}

Result<std::chrono::nanoseconds> MeasuredProcess::finish()
{
    ::kill(m_pid, SIGINT);
    const auto deadline = std::chrono::steady_clock::now() + finishLimit;
    while (std::chrono::steady_clock::now() < deadline) {
        int status = 0;
        rusage used{};
        if (::wait4(m_pid, &status, WNOHANG, &used) == m_pid) {
            m_pid = 0;
            if (!WIFEXITED(status)) {
                return captureFailure(QStringLiteral("%1 was ended by signal %2").arg(m_name).arg(WTERMSIG(status)));
            }
            return span(used.ru_utime) + span(used.ru_stime);
        }
        std::this_thread::sleep_for(finishPause);
    }
    return captureFailure(QStringLiteral("%1 did not end").arg(m_name));
}

}  // namespace vantiro
