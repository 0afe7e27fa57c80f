// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>

#include <sys/types.h>

/// What copies need of the disk. Numbers of failures are positive errnos. Any thread.
namespace vantiro::copyFiles {

/// Which of the two files failed, and how.
struct Failure {
    enum class Side {
        reading,
        writing,
    };

    Side side = Side::reading;
    int number = 0;
};

/// Writes all the bytes at the offset. 0 or an errno.
[[nodiscard]] int writeAt(int descriptor, std::int64_t offset, std::span<const std::byte> bytes);

/// Copies up to `count` bytes of one open file into another, where the volume can without moving them, and returns how
/// many there were: fewer only at the source's end.
[[nodiscard]] std::expected<std::int64_t, Failure> copyBytes(
    int source, std::int64_t sourceOffset, int target, std::int64_t targetOffset, std::int64_t count);

/// Lets the disk begin with bytes that were written, so that a sync at the end finds little left. Does not wait for it.
void beginWriteOut(int descriptor, std::int64_t offset, std::int64_t count);

/// Renames a file to a name that must be free, in one step that never replaces what another program puts there. 0 or an
/// errno, EEXIST if the name is taken.
[[nodiscard]] int renameToFree(const QString& from, const QString& to);

/// The volume that a file or folder lies on, links followed; nothing if there is none.
[[nodiscard]] std::optional<dev_t> volumeOf(const QString& path);

}  // namespace vantiro::copyFiles
