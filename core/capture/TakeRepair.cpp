// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeRepair.h"

#include "core/capture/TakeHeader.h"
#include "core/foundation/FileDescriptor.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantiro {

namespace {

    /// Fills `bytes` from the offset; false at the file's end and on errors, which then stand in errno.
    bool readAt(int descriptor, std::int64_t offset, std::span<std::byte> bytes)
    {
        errno = 0;
        while (!bytes.empty()) {
            const ssize_t count = ::pread(descriptor, bytes.data(), bytes.size(), offset);
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return false;
            }
            bytes = bytes.subspan(static_cast<std::size_t>(count));
            offset += count;
        }
        return true;
    }

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

    /// What lies between the offset and the file's end is one well-formed chunk after the other, as a tagging program
    /// leaves them behind the audio. Samples that pass for it by chance do not exist in practice.
    bool isChunks(int descriptor, TakeFormat format, std::int64_t offset, std::int64_t end)
    {
        const bool isCaf = format == TakeFormat::caf;
        const std::int64_t headBytes = isCaf ? 12 : 8;
        while (end - offset >= headBytes) {
            std::array<std::byte, 12> head{};
            if (!readAt(descriptor, offset, std::span(head).first(static_cast<std::size_t>(headBytes)))) {
                return false;
            }
            const bool isNamed = std::all_of(head.begin(), head.begin() + 4,
                [](std::byte letter) { return letter >= std::byte{0x20} && letter < std::byte{0x7F}; });
            const std::int64_t size = isCaf ? qFromBigEndian<std::int64_t>(head.data() + 4)
                                            : std::int64_t{qFromLittleEndian<std::uint32_t>(head.data() + 4)};
            if (!isNamed || size < 0 || size > end - offset - headBytes) {
                return false;
            }
            offset += headBytes + size;
            if (!isCaf && size % 2 != 0 && offset < end) {
                ++offset;
            }
        }
        return offset == end;
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
    if (!S_ISREG(status.st_mode) || !readAt(file.get(), 0, start)) {
        return S_ISREG(status.st_mode) && errno != 0 ? failure(path, errno) : Result<TakeRepair>(TakeRepair{});
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
    if (toldEnd < status.st_size && isChunks(file.get(), found->shape().format, toldEnd, status.st_size)) {
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
