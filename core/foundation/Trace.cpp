// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Trace.h"

#include "core/foundation/FileDescriptor.h"
#include "core/foundation/Files.h"
#include "core/foundation/Secrets.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <utility>

#include <fcntl.h>
#include <syslog.h>

namespace vantiro {

Trace Trace::fromEnvironment(QString file)
{
    return qEnvironmentVariableIsSet("VANTIRO_TRACE") ? Trace(std::move(file)) : Trace();
}

void Trace::append(const QString& text) const
{
    const QString safe = Secrets::redacted(text);
    ::syslog(LOG_USER | LOG_INFO, "%s", safe.toUtf8().constData());

    if (!files::makeFolder(QFileInfo(m_file).path())) {
        return;
    }
    const FileDescriptor file(
        ::open(QFile::encodeName(m_file).constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    const QByteArray line =
        (QDateTime::currentDateTimeUtc().toString(Qt::ISODate) + QLatin1Char(' ') + safe + QLatin1Char('\n')).toUtf8();
    // One call, so that lines of several threads do not mix.
    [[maybe_unused]] const ssize_t written = ::write(file.get(), line.constData(), static_cast<size_t>(line.size()));
}

}  // namespace vantiro
