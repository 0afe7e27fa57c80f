// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/LaunchedTool.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantiro {

struct LaunchedTool::Child {
    const pid_t pid;
    std::mutex mutex;
    /// The number is the child's until this is set, and may be anybody's afterwards.
    bool reaped = false;
};

namespace {

    class SpawnSettings {
    public:
        explicit SpawnSettings(int output)
        {
            ::posix_spawnattr_init(&m_attributes);
            ::posix_spawn_file_actions_init(&m_actions);
            // The output goes first: it may itself be descriptor 0 in a process that was started without any.
            keep(::posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO));
            keep(::posix_spawn_file_actions_adddup2(&m_actions, output, STDERR_FILENO));
            keep(::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
            keep(::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1));
            sigset_t signals{};
            ::sigemptyset(&signals);
            keep(::posix_spawnattr_setsigmask(&m_attributes, &signals));
            ::sigfillset(&signals);
            keep(::posix_spawnattr_setsigdefault(&m_attributes, &signals));
            keep(::posix_spawnattr_setflags(
                &m_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
        }
        ~SpawnSettings()
        {
            ::posix_spawn_file_actions_destroy(&m_actions);
            ::posix_spawnattr_destroy(&m_attributes);
        }
        SpawnSettings(const SpawnSettings&) = delete;
        SpawnSettings& operator=(const SpawnSettings&) = delete;

        /// 0 or an errno value.
        [[nodiscard]] int spawn(pid_t& pid, const char* program, char* const* arguments) const
        {
            return m_error != 0 ? m_error : ::posix_spawn(&pid, program, &m_actions, &m_attributes, arguments, environ);
        }

    private:
        void keep(int error) { m_error = m_error != 0 ? m_error : error; }

        posix_spawnattr_t m_attributes{};
        posix_spawn_file_actions_t m_actions{};
        int m_error = 0;
    };

    /// Waits until the child has ended but leaves it to be reaped, so that its number stays taken.
    void waitForEnd(pid_t pid)
    {
        siginfo_t information{};
        while (::waitid(P_PID, static_cast<id_t>(pid), &information, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
        }
    }

}  // namespace

Result<LaunchedTool> LaunchedTool::launch(const QString& program, const QStringList& arguments, int output)
{
    std::vector<QByteArray> texts{QFile::encodeName(program)};
    for (const QString& argument : arguments) {
        texts.push_back(QFile::encodeName(argument));
    }
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (QByteArray& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);

    pid_t pid = 0;
    if (const int error = SpawnSettings(output).spawn(pid, pointers.front(), pointers.data()); error != 0) {
        return std::unexpected(errnoError(program, error));
    }
    const auto child = std::make_shared<Child>(pid);

    // A new thread inherits the mask, and no signal of this process is to be handled on a thread that nobody knows.
    sigset_t everything{};
    sigset_t before{};
    ::sigfillset(&everything);
    ::pthread_sigmask(SIG_SETMASK, &everything, &before);
    std::thread([child] {
        waitForEnd(child->pid);
        const std::scoped_lock lock(child->mutex);
        ::waitpid(child->pid, nullptr, WNOHANG);
        child->reaped = true;
    }).detach();
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return LaunchedTool(child);
}

LaunchedTool::LaunchedTool(std::shared_ptr<Child> child) : m_child(std::move(child)) { }

std::int32_t LaunchedTool::pid() const noexcept
{
    return m_child->pid;
}

bool LaunchedTool::isRunning() const
{
    const std::scoped_lock lock(m_child->mutex);
    return !m_child->reaped;
}

void LaunchedTool::terminate() const
{
    const std::scoped_lock lock(m_child->mutex);
    if (!m_child->reaped) {
        ::kill(m_child->pid, SIGTERM);
    }
}

}  // namespace vantiro
