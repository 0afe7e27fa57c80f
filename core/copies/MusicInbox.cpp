// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/MusicInbox.h"

#include "core/copies/CopyFiles.h"
#include "core/copies/CopyJournal.h"
#include "core/copies/CopyWords.h"
#include "core/copies/TemporaryFile.h"
#include "core/foundation/FileDescriptor.h"
#include "core/foundation/Files.h"
#include "core/foundation/Log.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantiro::MusicInbox {

namespace {

    using Stage = CopyFailure::Stage;

    struct InboxWords {
        Q_DECLARE_TR_FUNCTIONS(MusicInbox)
    };

    bool isFolder(const QString& path)
    {
        return QFileInfo(path).isDir();
    }

    bool canMakeFilesIn(const QString& folder)
    {
        return isFolder(folder) && ::access(QFile::encodeName(folder).constData(), W_OK | X_OK) == 0;
    }

    QString freshUuid()
    {
        return QUuid::createUuid().toString(QUuid::WithoutBraces);
    }

    enum class Place {
        besideInbox,
        inInbox,
    };

    /// Where the file may be made before it shows, the best place first. A watcher of the inbox never sees what lies
    /// beside it, and knows by the name that what lies in it is not to be taken.
    std::vector<Place> stagingPlaces(const QString& inbox)
    {
        const QString parent = QFileInfo(inbox).path();
        if (canMakeFilesIn(parent) && copyFiles::volumeOf(parent) == copyFiles::volumeOf(inbox)) {
            return {Place::besideInbox, Place::inInbox};
        }
        return {Place::inInbox};
    }

    TemporaryFile stagingFile(const QString& inbox, Place place)
    {
        const QString folder = place == Place::besideInbox ? QFileInfo(inbox).path() : inbox;
        const QString ending = place == Place::besideInbox ? QStringLiteral(".m4a") : QStringLiteral(".part");
        return {folder + u'/' + CopyJournal::stagingPrefix, ending};
    }

    std::unexpected<CopyFailure> systemFailure(const QString& path, int number)
    {
        return std::unexpected(CopyFailure{Stage::failed, errnoError(path, number)});
    }

    /// Makes a synced copy at a path where nothing stands.
    CopyOutcome copyWhole(const QString& file, const QString& staging, const CopyEncoder::Cancelled& cancelled,
        const CopyRoom::Surroundings& surroundings)
    {
        const FileDescriptor source(::open(QFile::encodeName(file).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        struct stat status = {};
        if (!source.isOpen() || ::fstat(source.get(), &status) != 0) {
            return systemFailure(file, errno);
        }
        if (!S_ISREG(status.st_mode)) {
            return systemFailure(file, EINVAL);
        }
        const auto volume = [&] { return surroundings.volume(staging); };
        const auto noRoom = [&] { return CopyWords::noRoom(QFileInfo(staging).path()); };
        if (!CopyRoom::fits(status.st_size, volume())) {
            return copyFailure(Stage::refused, noRoom());
        }
        CopyRoomWatch watch(volume, surroundings.now);
        const FileDescriptor target(
            ::open(QFile::encodeName(staging).constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (!target.isOpen()) {
            return systemFailure(staging, errno);
        }
        // In pieces: a take that needs the room, or a user who thinks again, does not wait for the end of hours.
        constexpr std::int64_t pieceBytes = 16LL << 20;
        for (std::int64_t done = 0; done < status.st_size; done += pieceBytes) {
            if (watch.isShort()) {
                return copyFailure(Stage::failed, noRoom());
            }
            if (cancelled && cancelled()) {
                return copyFailure(Stage::cancelled, CopyWords::cancelled());
            }
            const std::int64_t piece = std::min(pieceBytes, status.st_size - done);
            const auto copied = copyFiles::copyBytes(source.get(), done, target.get(), done, piece);
            if (!copied) {
                const bool isSource = copied.error().side == copyFiles::Failure::Side::reading;
                return systemFailure(isSource ? file : staging, copied.error().number);
            }
            if (*copied < piece) {
                return systemFailure(file, EIO);
            }
        }
        return ::fsync(target.get()) == 0 ? CopyOutcome() : systemFailure(staging, errno);
    }

    /// Gives the file its name in the inbox. 0 or an errno.
    int moveIn(const QString& staging, const QString& file, const QString& inbox)
    {
        // Four characters are few, so a name may be taken once more.
        constexpr int mostNames = 100;
        const QFileInfo info(file);
        const QString ending = info.suffix().isEmpty() ? QString() : u'.' + info.suffix();
        QString name = info.fileName();
        int failed = EEXIST;
        for (int tried = 0; failed == EEXIST && tried < mostNames; ++tried) {
            failed = copyFiles::renameToFree(staging, inbox + u'/' + name);
            name = info.completeBaseName() + u' ' + freshUuid().first(4) + ending;
        }
        return failed;
    }

}  // namespace

QString defaultFolder(const QString& home)
{
    return home + QStringLiteral("/Music/Music/Media.localized/") + folderName;
}

std::optional<QString> resolve(const QString& picked, const std::function<bool(const QString&)>& exists)
{
    QString folder = QDir::cleanPath(picked);
    if (QFileInfo(folder).fileName().startsWith(QLatin1StringView("Automatically Add to Music")) && exists(folder)) {
        return folder;
    }
    for (const QLatin1StringView above : {QLatin1StringView(""), QLatin1StringView("Media.localized/"),
             QLatin1StringView("Media/"), QLatin1StringView("Music/Media.localized/")}) {
        QString candidate = QDir::cleanPath(folder + u'/' + above + folderName);
        if (exists(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

Result<QString> inboxFor(const QString& picked)
{
    const QString inbox = resolve(picked, isFolder).value_or(QDir::cleanPath(picked));
    return canMakeFilesIn(inbox) ? Result<QString>(inbox) : std::unexpected(refusal(picked));
}

Error refusal(const QString& picked)
{
    return LibraryError{
        InboxWords::tr("There is no Automatically Add to Music folder in %1. In Music, Settings, Files shows where "
                       "Music keeps its media folder.")
            .arg(QFileInfo(QDir::cleanPath(picked)).fileName())};
}

Error missing()
{
    return LibraryError{InboxWords::tr("Music's Automatically Add to Music folder is missing")};
}

std::optional<QString> chosen(const SettingsStore& settings)
{
    const QString stored = settings.value(bookmarkKey).toString();
    return QDir::isAbsolutePath(stored) ? std::optional(QDir::cleanPath(stored)) : std::nullopt;
}

void save(const std::optional<QString>& inbox, SettingsStore& settings)
{
    settings.set(bookmarkKey, inbox ? QJsonValue(*inbox) : QJsonValue(QJsonValue::Undefined));
}

std::optional<QString> locateInbox(const std::optional<QString>& chosen, const QString& home)
{
    if (QString standard = defaultFolder(home); isFolder(standard)) {
        return standard;
    }
    return chosen && isFolder(*chosen) ? chosen : std::nullopt;
}

CopyOutcome addToMusic(const QString& file, const std::optional<QString>& inbox,
    const CopyEncoder::Cancelled& cancelled, const CopyRoom::Surroundings& surroundings)
{
    if (!inbox) {
        return std::unexpected(CopyFailure{Stage::refused, missing()});
    }
    CopyOutcome added = systemFailure(*inbox, EXDEV);
    for (const Place place : stagingPlaces(*inbox)) {
        const TemporaryFile staging = stagingFile(*inbox, place);
        added = copyWhole(file, staging.path(), cancelled, surroundings);
        if (!added) {
            break;
        }
        const int failed = moveIn(staging.path(), file, *inbox);
        if (failed == 0) {
            if (const auto synced = files::syncParentFolder(*inbox + u'/'); !synced) {
                logLine(errorText(synced.error()));
            }
            return {};
        }
        added = systemFailure(*inbox, failed);
        if (failed != EXDEV) {
            break;
        }
        // Two mounts of one volume look like one until something is moved.
    }
    return added;
}

}  // namespace vantiro::MusicInbox
