// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/PrivateGraph.h"

#include "core/foundation/FileDescriptor.h"
#include "core/foundation/Files.h"
#include "core/foundation/RealTime.h"
#include "platform/rig/GraphConfiguration.h"
#include "platform/rig/GraphConnection.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantiro {

namespace {

    using Milliseconds = std::chrono::milliseconds;

    constexpr Milliseconds startLimit{10000};
    constexpr Milliseconds endLimit{2000};

    // All that the child needs is made before the fork: between fork and exec only async-signal-safe calls are
    // allowed, since another thread may hold the allocator's lock.
    struct Launch {
        QByteArray program;
        std::vector<QByteArray> arguments;
        std::vector<QByteArray> environment;
        QByteArray logPath;

        [[nodiscard]] static std::vector<char*> pointers(std::vector<QByteArray>& strings)
        {
            std::vector<char*> result;
            result.reserve(strings.size() + 1);
            for (QByteArray& string : strings) {
                result.push_back(string.data());
            }
            result.push_back(nullptr);
            return result;
        }
    };

    [[noreturn]] void runChild(const char* program, char* const* arguments, char* const* environment,
        const char* logPath, pid_t parent, int failurePipe)
    {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) {
            ::_exit(127);
        }
        for (int signal = 1; signal < NSIG; ++signal) {
            ::signal(signal, SIG_DFL);
        }
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        const int input = ::open("/dev/null", O_RDONLY);
        const int log = ::open(logPath, O_WRONLY | O_CREAT | O_APPEND, 0600);
        if (input >= 0 && log >= 0) {
            ::dup2(input, STDIN_FILENO);
            ::dup2(log, STDOUT_FILENO);
            ::dup2(log, STDERR_FILENO);
            ::execve(program, arguments, environment);
        }
        const int number = errno;
        // The parent reads end of file if this is lost, and finds the dead child soon after.
        [[maybe_unused]] const ssize_t written = ::write(failurePipe, &number, sizeof(number));
        ::_exit(127);
    }

    Result<pid_t> launch(Launch& what)
    {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            return std::unexpected(errnoError(QStringLiteral("pipewire"), errno));
        }
        const FileDescriptor readEnd(ends[0]);
        FileDescriptor writeEnd(ends[1]);
        const std::vector<char*> arguments = Launch::pointers(what.arguments);
        const std::vector<char*> environment = Launch::pointers(what.environment);
        const pid_t parent = ::getpid();
        const pid_t child = ::fork();
        if (child == 0) {
            runChild(what.program.constData(), arguments.data(), environment.data(), what.logPath.constData(), parent,
                writeEnd.get());
        }
        const int forkError = errno;
        writeEnd.reset();
        if (child < 0) {
            return std::unexpected(errnoError(QStringLiteral("pipewire"), forkError));
        }
        int number = 0;
        ssize_t count = 0;
        do {
            count = ::read(readEnd.get(), &number, sizeof(number));
        } while (count < 0 && errno == EINTR);
        if (count == sizeof(number)) {
            ::waitpid(child, nullptr, 0);
            return std::unexpected(errnoError(QFile::decodeName(what.program), number));
        }
        return child;
    }

    // The caller's environment less what would lead the daemon to another configuration or socket.
    std::vector<QByteArray> daemonEnvironment(const QString& folder)
    {
        std::vector<QByteArray> result;
        for (char** entry = environ; *entry != nullptr; ++entry) {
            const QByteArray variable(*entry);
            const bool isOurs = variable.startsWith("PIPEWIRE_") && !variable.startsWith("PIPEWIRE_DEBUG=")
                && !variable.startsWith("PIPEWIRE_MODULE_DIR=");
            if (!isOurs && !variable.startsWith("XDG_RUNTIME_DIR=") && !variable.startsWith("DBUS_")) {
                result.push_back(variable);
            }
        }
        const QByteArray place = QFile::encodeName(folder);
        for (const char* name : {"XDG_RUNTIME_DIR=", "PIPEWIRE_RUNTIME_DIR=", "PIPEWIRE_CONFIG_DIR="}) {
            result.push_back(QByteArray(name) + place);
        }
        return result;
    }

}  // namespace

struct PrivateGraph::Daemon {
    QString folder;
    Options options;
    pid_t pid = 0;
    FileDescriptor handle;
    bool isPaused = false;

    [[nodiscard]] QString path(const QString& name) const { return folder + QLatin1Char('/') + name; }

    [[nodiscard]] Result<void> start()
    {
        const QString program = QStandardPaths::findExecutable(QStringLiteral("pipewire"));
        if (program.isEmpty()) {
            return std::unexpected(errnoError(QStringLiteral("pipewire"), ENOENT));
        }
        const QString configuration = path(GraphConfiguration::fileName);
        const QByteArray text = GraphConfiguration::text(options, realTime::isGranted());
        if (auto written = files::replace(configuration, text, files::Durability::passing); !written) {
            return written;
        }
        Launch what{.program = QFile::encodeName(program),
            .arguments = {"pipewire", "-c", QFile::encodeName(configuration)},
            .environment = daemonEnvironment(folder),
            .logPath = QFile::encodeName(path(QStringLiteral("pipewire.log")))};
        const Result<pid_t> child = launch(what);
        if (!child) {
            return std::unexpected(child.error());
        }
        pid = *child;
        handle = FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
        isPaused = false;
        auto answered = waitForAnswer();
        if (!answered) {
            end(SIGKILL);
        }
        return answered;
    }

    // The socket exists before the daemon serves it, so only an answer counts as readiness.
    [[nodiscard]] Result<void> waitForAnswer()
    {
        const auto deadline = std::chrono::steady_clock::now() + startLimit;
        const QString socket = path(GraphConfiguration::socketName);
        Error error;
        do {
            auto connection = GraphConnection::open(socket, {}, startLimit);
            if (connection) {
                return {};
            }
            error = connection.error();
            if (waitForEnd(Milliseconds(5))) {
                const QString log = path(QStringLiteral("pipewire.log"));
                return captureFailure(QStringLiteral("The private PipeWire ended at once; see %1").arg(log));
            }
        } while (std::chrono::steady_clock::now() < deadline);
        return std::unexpected(error);
    }

    // True once the daemon has ended (and is reaped then) or none was there.
    bool waitForEnd(Milliseconds limit)
    {
        if (pid == 0) {
            return true;
        }
        pollfd waiting{.fd = handle.get(), .events = POLLIN, .revents = 0};
        ::poll(&waiting, 1, static_cast<int>(limit.count()));
        if (::waitpid(pid, nullptr, WNOHANG) != pid) {
            return false;
        }
        pid = 0;
        handle.reset();
        return true;
    }

    void end(int signal)
    {
        if (waitForEnd(Milliseconds(0))) {
            return;
        }
        ::kill(pid, signal);
        // A stopped process acts on nothing but SIGKILL until it is continued.
        ::kill(pid, SIGCONT);
        if (!waitForEnd(endLimit)) {
            ::kill(pid, SIGKILL);
            while (!waitForEnd(endLimit)) {
            }
        }
    }
};

PrivateGraph::PrivateGraph(std::unique_ptr<Daemon> daemon) : m_daemon(std::move(daemon)) { }

PrivateGraph::~PrivateGraph()
{
    kill();
}

Result<std::unique_ptr<PrivateGraph>> PrivateGraph::start(const QString& folder, const Options& options)
{
    const QString place = QDir(folder).absolutePath();
    if (auto made = files::makeFolder(place); !made) {
        return std::unexpected(made.error());
    }
    auto daemon = std::make_unique<Daemon>();
    daemon->folder = place;
    daemon->options = options;
    if (auto started = daemon->start(); !started) {
        return std::unexpected(started.error());
    }
    return std::unique_ptr<PrivateGraph>(new PrivateGraph(std::move(daemon)));
}

QList<PrivateGraph::Variable> PrivateGraph::environment() const
{
    return {{QStringLiteral("PIPEWIRE_RUNTIME_DIR"), m_daemon->folder},
        {QStringLiteral("XDG_RUNTIME_DIR"), m_daemon->folder},
        {QStringLiteral("PIPEWIRE_REMOTE"), GraphConfiguration::socketName}};
}

void PrivateGraph::applyEnvironment() const
{
    for (const auto& [name, value] : environment()) {
        ::setenv(name.toLatin1().constData(), QFile::encodeName(value).constData(), 1);
    }
}

Result<void> PrivateGraph::givePortsToStreams()
{
    const QString folder = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (folder.isEmpty()) {
        return captureFailure(QStringLiteral("There is no folder for the configuration of streams."));
    }
    for (const QString& client : {QStringLiteral("client"), QStringLiteral("client-rt")}) {
        auto written = files::replace(folder + QStringLiteral("/pipewire/%1.conf.d/ports.conf").arg(client),
            "stream.properties = { adapter.auto-port-config = { mode = dsp position = preserve } }",
            files::Durability::passing);
        if (!written) {
            return written;
        }
    }
    return {};
}

QString PrivateGraph::socketPath() const
{
    return m_daemon->path(GraphConfiguration::socketName);
}

pid_t PrivateGraph::processId() const
{
    return isRunning() ? m_daemon->pid : 0;
}

bool PrivateGraph::isRunning() const
{
    return !m_daemon->waitForEnd(Milliseconds(0));
}

void PrivateGraph::stop()
{
    m_daemon->end(SIGTERM);
}

void PrivateGraph::kill()
{
    m_daemon->end(SIGKILL);
}

void PrivateGraph::pause()
{
    if (!isRunning() || m_daemon->isPaused) {
        return;
    }
    ::kill(m_daemon->pid, SIGSTOP);
    // The signal is delivered some time after the call; whoever pauses relies on the silence from here on.
    siginfo_t change{};
    ::waitid(P_PID, static_cast<id_t>(m_daemon->pid), &change, WSTOPPED | WEXITED | WNOWAIT);
    m_daemon->isPaused = true;
}

void PrivateGraph::resume()
{
    if (isRunning() && m_daemon->isPaused) {
        ::kill(m_daemon->pid, SIGCONT);
        m_daemon->isPaused = false;
    }
}

Result<void> PrivateGraph::restart()
{
    stop();
    return m_daemon->start();
}

}  // namespace vantiro
