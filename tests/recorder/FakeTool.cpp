// SPDX-License-Identifier: GPL-3.0-or-later
// Takes the recorder's place in tests of its client: the variable VANTIRO_FAKE_TOOL_MODE says how it behaves.
#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace vantiro;

/// Prints what it was born with, one fact a line.
void printSurroundings(const QStringList& arguments)
{
    sigset_t blocked{};
    ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
    int changedSignals = 0;
    for (int number = 1; number < SIGRTMIN; ++number) {
        struct sigaction action{};
        const bool ignored = ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
        changedSignals += ignored || ::sigismember(&blocked, number) == 1 ? 1 : 0;
    }
    int openDescriptors = 0;
    for (int descriptor = 3; descriptor < 256; ++descriptor) {
        openDescriptors += ::fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
    }
    std::printf("%s\n", qPrintable(arguments.join(u'|')));
    std::printf("own session: %d\n", ::getsid(0) == ::getpid() ? 1 : 0);
    std::printf("signals blocked or ignored: %d\n", changedSignals);
    std::printf("inherited descriptors: %d\n", openDescriptors);
    std::printf("input: %s\n", qPrintable(QFile::symLinkTarget(QStringLiteral("/proc/self/fd/0"))));
    std::printf("folder: %s\n", qPrintable(QDir::currentPath()));
}

RecorderState stateFor(pid_t pid, const QStringList& arguments)
{
    const qsizetype output = arguments.indexOf(QStringLiteral("--out"));
    return RecorderState::started({
        .pid = pid,
        .path = output < 0 ? VantiroPaths::newTakeURL(TakeFormat::caf) : arguments.value(output + 1),
        .deviceUID = QStringLiteral("uid"),
        .deviceName = QStringLiteral("Device"),
        .channels = {1, 2},
        .startedAt = QDateTime::currentDateTimeUtc(),
    });
}

void writeState(const RecorderState& state, const QString& path)
{
    if (!RecorderStateStore::write(state, path)) {
        std::puts("cannot write the state");
    }
}

/// A take from its lock to its record; `mode` says what goes wrong at the end.
int runTake(std::string_view mode, const QStringList& arguments)
{
    sigset_t stopSignals{};
    ::sigemptyset(&stopSignals);
    ::sigaddset(&stopSignals, SIGINT);
    ::sigprocmask(SIG_BLOCK, &stopSignals, nullptr);

    const auto lock = RecorderLock::acquire(VantiroPaths::lockFile());
    if (!lock) {
        std::puts("the lock is taken");
        return 1;
    }
    RecorderState state = stateFor(::getpid(), arguments);
    writeState(state, VantiroPaths::stateFile());
    int received = 0;
    ::sigwait(&stopSignals, &received);
    if (mode == "slow") {
        std::puts("finishing");
        std::fflush(stdout);
        ::sigwait(&stopSignals, &received);
    }
    if (mode == "other record") {
        state.path += QStringLiteral(".other");
    }
    state.endedBecause = QStringLiteral("source-quit");
    if (mode != "no record") {
        writeState(state, VantiroPaths::lastTakeFile());
    }
    RecorderStateStore::clear();
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    QStringList arguments;
    for (int index = 1; index < argc; ++index) {
        arguments << QString::fromLocal8Bit(argv[index]);
    }
    const QByteArray variable = qgetenv("VANTIRO_FAKE_TOOL_MODE");
    const std::string_view mode(variable.constData());
    if (mode == "silent") {
        return 1;
    }
    if (mode == "surroundings") {
        printSurroundings(arguments);
        return 1;
    }
    if (mode == "words") {
        std::puts("  opening");
        std::fflush(stdout);
        std::fputs("no such device\n\n", stderr);
        return 1;
    }
    if (mode == "no lock" || mode == "foreign state") {
        const auto lock = mode == "no lock" ? std::nullopt : RecorderLock::acquire(VantiroPaths::lockFile());
        writeState(stateFor(mode == "no lock" ? ::getpid() : ::getppid(), arguments), VantiroPaths::stateFile());
        std::puts("waiting");
        std::fflush(stdout);
        ::pause();
    }
    return runTake(mode, arguments);
}
