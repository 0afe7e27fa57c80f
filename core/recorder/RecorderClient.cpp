// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderClient.h"

#include "core/foundation/FileDescriptor.h"
#include "core/foundation/Files.h"
#include "core/recorder/LaunchedTool.h"
#include "core/recorder/ProcessLiveness.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <csignal>
#include <thread>
#include <utility>

#include <fcntl.h>

namespace vantiro::RecorderClient {

using namespace Qt::Literals::StringLiterals;

namespace {

    constexpr QLatin1StringView toolName = "vantiro"_L1;
    constexpr std::chrono::milliseconds stopInterval{100};

    bool isExecutableFile(const QString& path)
    {
        const QFileInfo info(path);
        return info.isFile() && info.isExecutable();
    }

    Result<FileDescriptor> openEmptiedLog()
    {
        if (auto made = files::makeFolder(VantiroPaths::support()); !made) {
            return std::unexpected(made.error());
        }
        const QString path = VantiroPaths::recorderLog();
        // Appending, so that an earlier recorder that still prints leaves no hole in the emptied file.
        FileDescriptor log(
            ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600));
        if (!log.isOpen()) {
            return std::unexpected(errnoError(path, errno));
        }
        return log;
    }

    /// The state that this very process wrote, if its take runs by now. The lock is looked at last, since looking takes
    /// it for a moment.
    std::optional<RecorderState> runningStateOf(std::int32_t pid)
    {
        auto state = RecorderStateStore::read(VantiroPaths::stateFile());
        if (!state || state->pid != pid || !state->isRunning() || !RecorderLock::isHeld(VantiroPaths::lockFile())) {
            return std::nullopt;
        }
        return state;
    }

    QString whatItPrinted()
    {
        const QString text =
            QString::fromUtf8(files::read(VantiroPaths::recorderLog()).value_or(QByteArray())).trimmed();
        return text.isEmpty() ? QStringLiteral("the recorder did not start") : text;
    }

    std::optional<RecorderState> finalRecord(const QString& path)
    {
        auto record = RecorderStateStore::read(VantiroPaths::lastTakeFile());
        return record && record->path == path ? std::move(record) : std::nullopt;
    }

}  // namespace

std::optional<QString> toolPath()
{
    QString executable = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    if (executable.isEmpty()) {
        return std::nullopt;
    }
    // The kernel adds this once the program's file was replaced by an update; its folder is still the right one.
    if (const auto suffix = " (deleted)"_L1; executable.endsWith(suffix)) {
        executable.chop(suffix.size());
    }
    return toolPathFor(executable);
}

std::optional<QString> toolPathFor(const QString& executable)
{
    const QFileInfo program(executable);
    const QDir folder = program.dir();
    QStringList candidates{
        QDir::cleanPath(folder.filePath(QStringLiteral("../libexec/vantiro/vantiro"))),
        folder.filePath(toolName),
    };
    if (program.fileName() == toolName) {
        candidates.append(executable);
    }
    for (const QString& candidate : std::as_const(candidates)) {
        if (isExecutableFile(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

QStringList argumentVector(const Request& request)
{
    QStringList arguments{QStringLiteral("record"), QStringLiteral("--detached")};
    const bool isApp = request.source.kind == SourceRef::Kind::app;
    arguments << (isApp ? QStringLiteral("--app") : QStringLiteral("--device")) << request.source.id;
    if (request.channels) {
        QStringList numbers;
        for (const std::int64_t channel : *request.channels) {
            numbers << QString::number(channel);
        }
        arguments << QStringLiteral("--channels") << numbers.join(u',');
    }
    arguments << QStringLiteral("--format") << rawValue(request.format);
    if (request.output) {
        arguments << QStringLiteral("--out") << *request.output;
    }
    return arguments;
}

Result<RecorderState> start(const Request& request, const StartOptions& options)
{
    if (const auto running = RecorderStateStore::running()) {
        return captureFailure(QStringLiteral("already recording: ") + running->path);
    }
    const auto tool = options.findTool();
    if (!tool) {
        return captureFailure(QStringLiteral("the vantiro recorder tool is missing from this build"));
    }
    auto log = openEmptiedLog();
    if (!log) {
        return std::unexpected(log.error());
    }
    const auto launched = LaunchedTool::launch(*tool, argumentVector(request), log->get());
    if (!launched) {
        return std::unexpected(launched.error());
    }
    log->reset();
    for (int round = 0; round < options.rounds; ++round) {
        std::this_thread::sleep_for(options.interval);
        if (auto state = runningStateOf(launched->pid())) {
            return *std::move(state);
        }
        if (!launched->isRunning()) {
            break;
        }
    }
    launched->terminate();
    return captureFailure(whatItPrinted());
}

Result<std::optional<RecorderState>> stop(std::chrono::milliseconds timeout)
{
    const auto state = RecorderStateStore::running();
    if (!state) {
        RecorderStateStore::clear();
        return std::nullopt;
    }
    // The one and only request to finish a take: nothing that ends a process more roughly is ever sent to one that
    // runs.
    if (auto sent = ProcessLiveness::signal(state->pid, SIGINT); !sent) {
        return std::unexpected(sent.error());
    }
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (state->isRunning() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(stopInterval);
    }
    if (state->isRunning()) {
        return captureFailure(
            QStringLiteral("the recorder (pid %1) is still finalizing %2").arg(state->pid).arg(state->path));
    }
    return finalRecord(state->path);
}

}  // namespace vantiro::RecorderClient
