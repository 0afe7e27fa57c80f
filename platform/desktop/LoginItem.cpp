// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/LoginItem.h"

#include "core/foundation/Files.h"
#include "core/foundation/InstallLocation.h"
#include "platform/desktop/ApplicationId.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QStringList>

#include <algorithm>
#include <cerrno>

#include <unistd.h>

namespace vantiro::LoginItem {

namespace {

    using namespace Qt::StringLiterals;

    QString entryIn(const QString& folder)
    {
        return u"%1/autostart/%2.desktop"_s.arg(folder, QLatin1StringView(applicationId));
    }

    QString usersEntry()
    {
        return entryIn(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
    }

    /// The system's entry that counts, if there is one.
    std::optional<QByteArray> systemsEntry()
    {
        const QString own = usersEntry();
        for (const QString& folder : QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation)) {
            const QString path = entryIn(folder);
            if (const auto bytes = path == own ? std::nullopt : files::read(path)) {
                return bytes;
            }
        }
        return std::nullopt;
    }

    /// The value of a key in an entry's main group, or nothing.
    QByteArray valueOf(const QByteArray& entry, const QByteArray& key)
    {
        bool isInside = false;
        for (const QByteArray& raw : entry.split('\n')) {
            const QByteArray line = raw.trimmed();
            if (line.startsWith('[')) {
                isInside = line == "[Desktop Entry]";
            } else if (const auto at = line.indexOf('='); isInside && at > 0 && line.first(at).trimmed() == key) {
                return line.sliced(at + 1).trimmed();
            }
        }
        return {};
    }

    bool starts(const QByteArray& entry)
    {
        return valueOf(entry, "Hidden") != "true" && valueOf(entry, "X-GNOME-Autostart-enabled") != "false";
    }

    /// A path as the command of an entry: in quotes, what counts in those escaped, and that again as a text of the
    /// file.
    QString command(const QString& path)
    {
        QString quoted;
        for (const QChar letter : path) {
            if (u"\"`$\\"_s.contains(letter)) {
                quoted += u'\\';
            }
            quoted += letter == u'%' ? u"%%"_s : QString(letter);
        }
        quoted.replace(u"\\"_s, u"\\\\"_s).replace(u"\n"_s, u"\\n"_s).replace(u"\t"_s, u"\\t"_s);
        return u'"' + quoted.replace(u"\r"_s, u"\\r"_s) + u'"';
    }

    Result<void> write(const QString& lines)
    {
        const QString entry = u"[Desktop Entry]\nType=Application\nName=Vantiro\n"_s + lines;
        return files::replace(usersEntry(), entry.toUtf8(), files::Durability::lasting);
    }

}  // namespace

QString program(const QString& executable)
{
    const QString image = qEnvironmentVariable("APPIMAGE");
    if (!image.startsWith(u'/')) {
        return executable;
    }
    // The variable may come from another program in an image, which started this one.
    const QString mounted = qEnvironmentVariable("APPDIR");
    const bool isInside = (mounted.startsWith(u'/') && executable.startsWith(QDir::cleanPath(mounted) + u'/'))
        || InstallLocation::of(executable, QDir::homePath()) == InstallLocation::Kind::translocated;
    return isInside ? image : executable;
}

State state()
{
    const auto own = files::read(usersEntry());
    const auto entry = own ? own : systemsEntry();
    return entry && starts(*entry) ? State::on : State::off;
}

Result<void> set(State state, const QString& program)
{
    if (state == State::on) {
        return write(u"Exec=%1\nIcon=%2\nTerminal=false\nX-GNOME-Autostart-enabled=true\n"_s.arg(
            command(program), QLatin1StringView(applicationId)));
    }
    if (systemsEntry()) {
        return write(u"Hidden=true\n"_s);
    }
    const QString path = usersEntry();
    if (::unlink(QFile::encodeName(path).constData()) != 0 && errno != ENOENT) {
        return std::unexpected(errnoError(path, errno));
    }
    return {};
}

}  // namespace vantiro::LoginItem
