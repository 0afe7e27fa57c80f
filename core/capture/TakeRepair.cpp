// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeRepair.h"

#include "core/capture/TakeChunks.h"
#include "core/capture/TakeHeader.h"
#include "core/foundation/FileDescriptor.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantiro {

namespace {

    bool writeAt(int descriptor, TakeHeader::Piece piece)
    {
        while (!piece.bytes.empty()) {
            const ssize_t count = ::pwrite(descriptor, piece.bytes.data(), piece.bytes.size(), piece.offset);
            if (count < 0 && errno != EINTR) {
                return false;
            }
            if (count > 0) {
                piece.bytes = piece.bytes.subspan(static_cast<std::size_t>(count));
                piece.offset += count;
            }
        }
        return true;
    }

    /// A recorder that died left room reserved behind the file's end, as much as a minute of audio.
    bool holdsReserve(const struct stat& status)
    {
        constexpr std::int64_t blockBytes = 512;
        constexpr std::int64_t ordinaryBytes = std::int64_t{1} << 20;
        return status.st_blocks * blockBytes - status.st_size > ordinaryBytes;
    }

    std::unexpected<Error> failure(const QString& path, int number)
    {
        return std::unexpected(errnoError(path, number));
    }

    Result<void> writeSize(const QString& path, const TakeHeader& header, const struct stat& before)
    {
        const FileDescriptor file(::open(QFile::encodeName(path).constData(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
        if (!file.isOpen()) {
            return failure(path, errno);
        }
        struct stat now = {};
        if (::fstat(file.get(), &now) != 0 || now.st_ino != before.st_ino || now.st_dev != before.st_dev) {
            return failure(path, ESTALE);
        }
        if (!writeAt(file.get(), header.sizePiece())) {
            return failure(path, errno);
        }
        // Cutting a file to the size that it has frees what lies behind. If it fails, only room is lost.
        static_cast<void>(::ftruncate(file.get(), before.st_size) == 0);
        const std::array<struct timespec, 2> times{timespec{0, UTIME_OMIT}, before.st_mtim};
        // A volume that keeps no times does not make the repair a failure.
        static_cast<void>(::futimens(file.get(), times.data()));
        if (::fsync(file.get()) != 0) {
            return failure(path, errno);
        }
        return {};
    }

}  // namespace

Result<TakeRepair> repairTake(const QString& path)
{
    using Outcome = TakeRepair::Outcome;
    // Opened to write only once there is something to mend; without waiting, should a pipe have such a name.
    const FileDescriptor file(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen()) {
        return errno == ELOOP ? Result<TakeRepair>(TakeRepair{}) : failure(path, errno);
    }
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0) {
        return failure(path, errno);
    }
    std::array<std::byte, TakeHeader::size> start{};
    if (!S_ISREG(status.st_mode)) {
        return TakeRepair{};
    }
    const auto got = readAt(file.get(), 0, start);
    if (got != start.size()) {
        return got ? Result<TakeRepair>(TakeRepair{}) : failure(path, got.error());
    }
    const std::optional<TakeHeader> found = TakeHeader::parse(start);
    if (!found) {
        return TakeRepair{};
    }
    // Whoever writes a take holds its lock: one that is being recorded elsewhere is none of ours.
    if (::flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return TakeRepair{Outcome::whole, found->frames(), found->frames()};
    }

    const std::int64_t frameBytes = found->shape().frameBytes();
    const std::int64_t audioBytes = status.st_size - std::int64_t{TakeHeader::size};
    const std::int64_t frames = std::min(audioBytes / frameBytes, found->maxFrames());
    TakeHeader mended = *found;
    // Only a byte that is there counts as padding: the file never grows here.
    mended.tell(frames, found->needsPadding(frames) && audioBytes > frames * frameBytes);
    if (std::ranges::equal(mended.bytes(), found->bytes())) {
        if (holdsReserve(status)) {
            if (const auto freed = writeSize(path, mended, status); !freed) {
                return std::unexpected(freed.error());
            }
        }
        return TakeRepair{Outcome::whole, frames, frames};
    }
    const std::int64_t told = found->frames();
    const std::int64_t toldEnd =
        std::int64_t{TakeHeader::size} + told * frameBytes + (found->needsPadding(told) ? 1 : 0);
    if (toldEnd < status.st_size && areChunks(file.get(), found->shape().format, toldEnd, status.st_size)) {
        return TakeRepair{Outcome::notATake, told, told};
    }
    if (auto written = writeSize(path, mended, status); !written) {
        return std::unexpected(written.error());
    }
    return TakeRepair{Outcome::repaired, told, frames};
}

QStringList repairTakes(const QString& folder)
{
    QStringList mended;
    const QStringList names =
        QDir(folder).entryList({QStringLiteral("*.caf"), QStringLiteral("*.wav")}, QDir::Files | QDir::Hidden);
    for (const QString& name : names) {
        const QString path = folder + u'/' + name;
        const Result<TakeRepair> repair = repairTake(path);
        if (repair && repair->outcome == TakeRepair::Outcome::repaired) {
            mended.append(path);
        }
    }
    return mended;
}

}  // namespace vantiro
