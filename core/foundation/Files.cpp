// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Files.h"

#include "core/foundation/FileDescriptor.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace vantiro::files {

namespace {

    Result<void> writeAll(int descriptor, const QByteArray& bytes, const QString& path)
    {
        qsizetype written = 0;
        while (written < bytes.size()) {
            const ssize_t count =
                ::write(descriptor, bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
            if (count < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return std::unexpected(errnoError(path, errno));
            }
            written += count;
        }
        return {};
    }

    Result<void> writeTemporary(const QString& temporary, const QByteArray& bytes, Durability durability)
    {
        const FileDescriptor file(::open(
            QFile::encodeName(temporary).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (!file.isOpen()) {
            return std::unexpected(errnoError(temporary, errno));
        }
        if (auto written = writeAll(file.get(), bytes, temporary); !written) {
            return written;
        }
        if (durability == Durability::lasting && ::fsync(file.get()) != 0) {
            return std::unexpected(errnoError(temporary, errno));
        }
        return {};
    }

}  // namespace

std::optional<QByteArray> read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return std::nullopt;
    }
    return bytes;
}

Result<void> replace(const QString& path, const QByteArray& bytes, Durability durability)
{
    if (auto made = makeFolder(QFileInfo(path).path()); !made) {
        return made;
    }
    const QString temporary = QStringLiteral("%1.%2.tmp").arg(path).arg(::getpid());
    auto result = writeTemporary(temporary, bytes, durability);
    if (result && ::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(path).constData()) != 0) {
        result = std::unexpected(errnoError(path, errno));
    }
    if (!result) {
        ::unlink(QFile::encodeName(temporary).constData());
        return result;
    }
    return durability == Durability::lasting ? syncParentFolder(path) : Result<void>{};
}

Result<void> makeFolder(const QString& path)
{
    if (QFileInfo(path).isDir()) {
        return {};
    }
    const QString parent = QFileInfo(path).path();
    if (parent != path) {
        if (auto made = makeFolder(parent); !made) {
            return made;
        }
    }
    if (::mkdir(QFile::encodeName(path).constData(), 0700) != 0 && errno != EEXIST) {
        return std::unexpected(errnoError(path, errno));
    }
    return QFileInfo(path).isDir() ? Result<void>{} : std::unexpected(errnoError(path, ENOTDIR));
}

bool isSame(const QString& path, const QString& other)
{
    struct stat one = {};
    struct stat two = {};
    return ::stat(QFile::encodeName(path).constData(), &one) == 0
        && ::stat(QFile::encodeName(other).constData(), &two) == 0 && one.st_dev == two.st_dev
        && one.st_ino == two.st_ino;
}

Result<void> syncParentFolder(const QString& path)
{
    const QString folder = QFileInfo(path).path();
    const FileDescriptor descriptor(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen() || ::fsync(descriptor.get()) != 0) {
        // Some network and FUSE volumes cannot sync a folder; their rename is as lasting as it will ever be.
        if (errno != EINVAL && errno != ENOTSUP) {
            return std::unexpected(errnoError(folder, errno));
        }
    }
    return {};
}

}  // namespace vantiro::files
