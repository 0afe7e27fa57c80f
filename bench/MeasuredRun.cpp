// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/MeasuredRun.h"

#include "core/foundation/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantiro {

namespace {

    /// Strings as the system takes them.
    class Words {
    public:
        void add(const QByteArray& word) { m_words.push_back(word); }
        [[nodiscard]] char** pointers()
        {
            m_pointers.clear();
            for (QByteArray& word : m_words) {
                m_pointers.push_back(word.data());
            }
            m_pointers.push_back(nullptr);
            return m_pointers.data();
        }

    private:
        std::vector<QByteArray> m_words;
        std::vector<char*> m_pointers;
    };

    std::chrono::nanoseconds span(const timeval& value)
    {
        return std::chrono::seconds(value.tv_sec) + std::chrono::microseconds(value.tv_usec);
    }

    QByteArray everythingFrom(int descriptor)
    {
        QByteArray all;
        std::array<char, 4096> part;
        ssize_t count = 0;
        while ((count = ::read(descriptor, part.data(), part.size())) > 0 || (count < 0 && errno == EINTR)) {
            all.append(part.data(), std::max<ssize_t>(count, 0));
        }
        return all;
    }

}  // namespace

Result<MeasuredRun> MeasuredRun::of(const QString& program, const QStringList& arguments, const QStringList& variables)
{
    Words words;
    words.add(program.toLocal8Bit());
    for (const QString& argument : arguments) {
        words.add(argument.toLocal8Bit());
    }
    Words environment;
    for (const QString& variable : variables) {
        environment.add(variable.toLocal8Bit());
    }
    for (char** variable = environ; *variable != nullptr; ++variable) {
        environment.add(*variable);
    }
    int ends[2]{};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return std::unexpected(errnoError(program, errno));
    }
    const FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, writeEnd.get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    MeasuredRun run;
    pid_t pid = 0;
    char** const pointers = words.pointers();
    const auto before = std::chrono::steady_clock::now();
    const int number = ::posix_spawnp(&pid, pointers[0], &actions, nullptr, pointers, environment.pointers());
    ::posix_spawn_file_actions_destroy(&actions);
    if (number != 0) {
        return std::unexpected(errnoError(program, number));
    }
    writeEnd = FileDescriptor();
    run.output = everythingFrom(readEnd.get());
    int status = 0;
    rusage used{};
    while (::wait4(pid, &status, 0, &used) < 0) {
        if (errno != EINTR) {
            return std::unexpected(errnoError(program, errno));
        }
    }
    run.wall = std::chrono::steady_clock::now() - before;
    run.processor = span(used.ru_utime) + span(used.ru_stime);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return captureFailure(QStringLiteral("%1 failed").arg(program));
    }
    return run;
}

}  // namespace vantiro
