// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/VantiroPaths.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace vantiro::VantiroPaths {

namespace {

    /// A base folder as the environment names it, or else this one in the user's home.
    QString baseFolder(const char* variable, const QString& inHome)
    {
        // Relative paths in these variables are to be ignored: they would lead each process elsewhere.
        const QString named = QFile::decodeName(qgetenv(variable));
        return QDir::isAbsolutePath(named) ? QDir::cleanPath(named) : QDir(QDir::homePath()).filePath(inHome);
    }

    QString inSupport(const QString& name)
    {
        return support() + u'/' + name;
    }

}  // namespace

QString takes()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::MusicLocation)).filePath(QStringLiteral("Vantiro"));
}

QString support()
{
    return QDir(baseFolder("XDG_DATA_HOME", QStringLiteral(".local/share"))).filePath(QStringLiteral("Vantiro"));
}

QString stateFile()
{
    return inSupport(QStringLiteral("recorder.json"));
}

QString lockFile()
{
    return inSupport(QStringLiteral("recorder.lock"));
}

QString recorderLog()
{
    return inSupport(QStringLiteral("recorder.log"));
}

QString lastTakeFile()
{
    return inSupport(QStringLiteral("last-take.json"));
}

QString djAppsFile()
{
    return inSupport(QStringLiteral("dj-apps.json"));
}

QString sourcesFile()
{
    return inSupport(QStringLiteral("sources.json"));
}

QString exportsFile()
{
    return inSupport(QStringLiteral("exports.json"));
}

QString pendingCopiesFile()
{
    return inSupport(QStringLiteral("pending-copies.json"));
}

QString traceFile()
{
    return inSupport(QStringLiteral("trace.log"));
}

QString settingsFile()
{
    return QDir(baseFolder("XDG_CONFIG_HOME", QStringLiteral(".config")))
        .filePath(QStringLiteral("Vantiro/settings.json"));
}

QString newTakeName(TakeFormat format, const QDateTime& now)
{
    // asprintf() writes plain digits; a locale's own digits or calendar have no place in a file name.
    const QDateTime local = now.toLocalTime();
    const QDate date = local.date();
    const QTime time = local.time();
    return QString::asprintf("mix-%d-%02d-%02d_%02d-%02d-%02d.", date.year(), date.month(), date.day(), time.hour(),
               time.minute(), time.second())
        + rawValue(format);
}

QString newTakeURL(TakeFormat format, const QDateTime& now)
{
    return QDir(takes()).filePath(newTakeName(format, now));
}

}  // namespace vantiro::VantiroPaths
