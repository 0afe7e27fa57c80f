// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/ProcessLiveness.h"

#include "core/foundation/Files.h"

#include <QByteArrayView>
#include <QList>

#include <cerrno>
#include <csignal>

#include <unistd.h>

namespace vantiro::ProcessLiveness {

bool exists(std::int32_t pid)
{
    if (pid < 1) {
        return false;
    }
    const int result = ::kill(pid, 0);
    return exists(result, errno);
}

bool exists(int killResult, int error)
{
    return killResult == 0 || error != ESRCH;
}

Result<void> signal(std::int32_t pid, int number)
{
    if (pid < 2) {
        return captureFailure(QStringLiteral("refusing to signal pid %1").arg(pid));
    }
    if (::kill(pid, number) != 0) {
        const QString reason = errnoText(errno);
        return captureFailure(QStringLiteral("cannot signal the recorder (pid %1): %2").arg(pid).arg(reason));
    }
    return {};
}

std::optional<double> startTime(std::int32_t pid)
{
    const auto line = files::read(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!line) {
        return std::nullopt;
    }
    // "PID (NAME) STATE ...": the name may hold anything, brackets and blanks too, so the fields are counted from its
    // end. The state is the third field of the line, the start time the 22nd.
    constexpr qsizetype startIndex = 22 - 3;
    const QList<QByteArray> fields = line->mid(line->lastIndexOf(')') + 1).simplified().split(' ');
    const long ticksPerSecond = ::sysconf(_SC_CLK_TCK);
    if (fields.size() <= startIndex || ticksPerSecond <= 0) {
        return std::nullopt;
    }
    // A process that has ended and only waits to be reaped records nothing any more.
    if (const QByteArray& state = fields.front(); state == "Z" || state == "X") {
        return std::nullopt;
    }
    bool valid = false;
    const qulonglong ticks = fields[startIndex].toULongLong(&valid);
    return valid ? std::optional(static_cast<double>(ticks) / static_cast<double>(ticksPerSecond)) : std::nullopt;
}

}  // namespace vantiro::ProcessLiveness
