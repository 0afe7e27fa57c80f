// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeStorage.h"
#include "core/foundation/FileDescriptor.h"
#include "core/foundation/Files.h"
#include "core/foundation/Log.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace vantiro {

namespace {

    constexpr std::int64_t largestFatFile = 4'294'967'295;

    std::optional<std::int64_t> freeBytesOf(const struct statvfs& volume)
    {
        // Some network and FUSE volumes answer with nothing but zeros.
        if (volume.f_blocks == 0) {
            return std::nullopt;
        }
        return static_cast<std::int64_t>(volume.f_bavail) * static_cast<std::int64_t>(volume.f_frsize);
    }

    class PosixTakeFile final : public TakeFile {
    public:
        explicit PosixTakeFile(FileDescriptor descriptor) : m_descriptor(std::move(descriptor)) { }

        int writeAt(std::int64_t offset, std::span<const std::byte> bytes) override
        {
            while (!bytes.empty()) {
                const ssize_t count = ::pwrite(m_descriptor.get(), bytes.data(), bytes.size(), offset);
                if (count < 0) {
                    if (errno == EINTR) {
                        continue;
                    }
                    return errno;
                }
                if (count == 0) {
                    return EIO;
                }
                bytes = bytes.subspan(static_cast<std::size_t>(count));
                offset += count;
            }
            return 0;
        }

        int syncData() override { return ::fdatasync(m_descriptor.get()) == 0 ? 0 : errno; }

        int syncAll() override { return ::fsync(m_descriptor.get()) == 0 ? 0 : errno; }

        int reserve(std::int64_t size) override
        {
            // Never posix_fallocate(), which writes zeros where the volume cannot reserve.
            int result = 0;
            do {
                result = ::fallocate(m_descriptor.get(), FALLOC_FL_KEEP_SIZE, 0, size);
            } while (result != 0 && errno == EINTR);
            return result == 0 ? 0 : errno;
        }

        void trimReserve() override
        {
            struct stat status = {};
            // Cutting a file to the size that it has frees what lies behind. If it fails, only room is lost.
            if (::fstat(m_descriptor.get(), &status) == 0 && ::ftruncate(m_descriptor.get(), status.st_size) != 0) {
                logLine(QStringLiteral("The room reserved behind a take could not be given back."));
            }
        }

        std::optional<std::int64_t> freeBytes() override
        {
            struct statvfs volume = {};
            return ::fstatvfs(m_descriptor.get(), &volume) == 0 ? freeBytesOf(volume) : std::nullopt;
        }

        std::optional<std::int64_t> largestFile() override
        {
            std::optional<std::int64_t> largest;
            struct statfs volume = {};
            if (::fstatfs(m_descriptor.get(), &volume) == 0 && volume.f_type == MSDOS_SUPER_MAGIC) {
                largest = largestFatFile;
            }
            struct rlimit limit = {};
            if (::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY
                && std::in_range<std::int64_t>(limit.rlim_cur)) {
                const auto allowed = static_cast<std::int64_t>(limit.rlim_cur);
                largest = std::min(largest.value_or(allowed), allowed);
            }
            return largest;
        }

    private:
        FileDescriptor m_descriptor;
    };

    class PosixTakeStorage final : public TakeStorage {
    public:
        std::expected<std::unique_ptr<TakeFile>, int> create(const QString& path) override
        {
            FileDescriptor descriptor(::open(
                QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
            if (!descriptor.isOpen()) {
                return std::unexpected(errno);
            }
            // Tells a repair by another program that this take is being written; a volume without locks does not.
            static_cast<void>(::flock(descriptor.get(), LOCK_EX | LOCK_NB));
            return std::make_unique<PosixTakeFile>(std::move(descriptor));
        }

        int renameToFree(const QString& from, const QString& to) override
        {
            const QByteArray source = QFile::encodeName(from);
            const QByteArray target = QFile::encodeName(to);
            struct stat status = {};
            if (::lstat(source.constData(), &status) != 0) {
                return errno;
            }
            if (!S_ISREG(status.st_mode)) {
                return ELOOP;
            }
            if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) == 0) {
                return 0;
            }
            if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP) {
                return errno;
            }
            // The volume knows no such flag, and may know no second links either: what is left is to look first.
            if (::lstat(target.constData(), &status) == 0) {
                return EEXIST;
            }
            return errno == ENOENT && ::rename(source.constData(), target.constData()) == 0 ? 0 : errno;
        }

        int remove(const QString& path) override
        {
            return ::unlink(QFile::encodeName(path).constData()) == 0 ? 0 : errno;
        }

        int syncFolderOf(const QString& path) override
        {
            const Result<void> synced = files::syncParentFolder(path);
            if (synced) {
                return 0;
            }
            const auto* failure = std::get_if<SystemError>(&synced.error());
            return failure != nullptr ? failure->number : EIO;
        }

        std::optional<std::int64_t> freeBytesAt(const QString& path) override
        {
            struct statvfs volume = {};
            const QByteArray folder = QFile::encodeName(QFileInfo(path).path());
            return ::statvfs(folder.constData(), &volume) == 0 ? freeBytesOf(volume) : std::nullopt;
        }

        std::optional<std::int64_t> readStart(const QString& path, std::span<std::byte> start) override
        {
            const FileDescriptor file(
                ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
            struct stat status = {};
            if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
                return std::nullopt;
            }
            while (!start.empty()) {
                const ssize_t count = ::read(file.get(), start.data(), start.size());
                if (count < 0 && errno == EINTR) {
                    continue;
                }
                if (count <= 0) {
                    return std::nullopt;
                }
                start = start.subspan(static_cast<std::size_t>(count));
            }
            return status.st_size;
        }
    };

}  // namespace

TakeStorage& posixTakeStorage()
{
    static PosixTakeStorage storage;
    return storage;
}

}  // namespace vantiro
