// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>

namespace vantiro {

/// One open take file, as the take writer needs it. Every call returns 0 or a positive errno, but where it says
/// otherwise, and may block for as long as the disk does. One thread at a time: who made the file, then
/// **Writer thread only.**
class TakeFile {
public:
    virtual ~TakeFile() = default;

    TakeFile(const TakeFile&) = delete;
    TakeFile& operator=(const TakeFile&) = delete;

    /// Writes all the bytes at the offset; short writes and interruptions are taken up again.
    [[nodiscard]] virtual int writeAt(std::int64_t offset, std::span<const std::byte> bytes) = 0;
    /// Brings written data, and what is needed to find it again, to the disk.
    [[nodiscard]] virtual int syncData() = 0;
    /// syncData() with everything else that the file system keeps about the file.
    [[nodiscard]] virtual int syncAll() = 0;
    /// Reserves room up to this size without changing the file's size.
    [[nodiscard]] virtual int reserve(std::int64_t size) = 0;
    /// Gives back what was reserved behind the file's end.
    virtual void trimReserve() = 0;
    /// Free bytes of the volume for this user; nothing if the volume does not tell.
    [[nodiscard]] virtual std::optional<std::int64_t> freeBytes() = 0;
    /// The largest file that the volume or the process's own limit allows, in bytes; nothing if there is no limit worth
    /// a name.
    [[nodiscard]] virtual std::optional<std::int64_t> largestFile() = 0;

protected:
    TakeFile() = default;
};

/// The disk as the take writer sees it; tests put failing disks in its place.
class TakeStorage {
public:
    virtual ~TakeStorage() = default;

    TakeStorage(const TakeStorage&) = delete;
    TakeStorage& operator=(const TakeStorage&) = delete;

    /// Makes a new file, mode 0600, that nobody else made before (never through a symbolic link). The failure is a
    /// positive errno; EEXIST if something stands there.
    [[nodiscard]] virtual std::expected<std::unique_ptr<TakeFile>, int> create(const QString& path) = 0;
    /// Renames a regular file to a name that must be free. 0 or a positive errno: EEXIST if the name is taken, ELOOP if
    /// `from` is no regular file.
    [[nodiscard]] virtual int renameToFree(const QString& from, const QString& to) = 0;
    /// Removes the empty file of a start that failed. 0 or a positive errno.
    [[nodiscard]] virtual int remove(const QString& path) = 0;
    /// Syncs the folder that holds `path`. 0 or a positive errno. Any thread.
    [[nodiscard]] virtual int syncFolderOf(const QString& path) = 0;
    /// Free bytes for this user in the folder that holds `path`; nothing if the volume does not tell.
    [[nodiscard]] virtual std::optional<std::int64_t> freeBytesAt(const QString& path) = 0;
    /// Opens a file anew by its path, fills `start` with its first bytes, and returns its size in bytes; nothing if it
    /// cannot be read or is shorter than that.
    [[nodiscard]] virtual std::optional<std::int64_t> readStart(const QString& path, std::span<std::byte> start) = 0;

protected:
    TakeStorage() = default;
};

/// The real disk. Lives as long as the process.
[[nodiscard]] TakeStorage& posixTakeStorage();

}  // namespace vantiro
