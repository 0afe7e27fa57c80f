// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyFiles.h"

#include "core/capture/TakeChunks.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantiro::copyFiles {

int writeAt(int descriptor, std::int64_t offset, std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::pwrite(descriptor, bytes.data(), bytes.size(), offset);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count == 0 ? EIO : errno;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
        offset += count;
    }
    return 0;
}

std::expected<std::int64_t, Failure> copyBytes(
    int source, std::int64_t sourceOffset, int target, std::int64_t targetOffset, std::int64_t count)
{
    std::int64_t done = 0;
    while (done < count) {
        off64_t from = sourceOffset + done;
        off64_t to = targetOffset + done;
        const ssize_t moved = ::copy_file_range(source, &from, target, &to, static_cast<std::size_t>(count - done), 0);
        if (moved <= 0) {
            break;
        }
        done += moved;
    }
    // Volumes that cannot, some of which say so by moving nothing, and all failures: plain calls tell which side it is.
    constexpr std::int64_t bufferBytes = 256LL * 1024;
    std::vector<std::byte> buffer(static_cast<std::size_t>(std::min(count - done, bufferBytes)));
    while (done < count) {
        const auto wanted = std::span(buffer).first(static_cast<std::size_t>(std::min(count - done, bufferBytes)));
        const auto got = readAt(source, sourceOffset + done, wanted);
        if (!got) {
            return std::unexpected(Failure{Failure::Side::reading, got.error()});
        }
        if (const int failed = writeAt(target, targetOffset + done, wanted.first(*got)); failed != 0) {
            return std::unexpected(Failure{Failure::Side::writing, failed});
        }
        done += static_cast<std::int64_t>(*got);
        if (*got < wanted.size()) {
            break;
        }
    }
    return done;
}

void beginWriteOut(int descriptor, std::int64_t offset, std::int64_t count)
{
    // What a volume cannot do early, the sync does in the end.
    static_cast<void>(::sync_file_range(descriptor, offset, count, SYNC_FILE_RANGE_WRITE));
}

int renameToFree(const QString& from, const QString& to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP) {
        return errno;
    }
    // The volume knows no such flag. A second name is never put over another file either.
    if (::link(source.constData(), target.constData()) == 0) {
        return ::unlink(source.constData()) == 0 ? 0 : errno;
    }
    if (errno != EPERM && errno != ENOSYS && errno != ENOTSUP) {
        return errno;
    }
    // It knows no second names: what is left is to look first.
    struct stat status = {};
    if (::lstat(target.constData(), &status) == 0) {
        return EEXIST;
    }
    return errno == ENOENT && ::rename(source.constData(), target.constData()) == 0 ? 0 : errno;
}

std::optional<dev_t> volumeOf(const QString& path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? std::optional(status.st_dev) : std::nullopt;
}

}  // namespace vantiro::copyFiles
