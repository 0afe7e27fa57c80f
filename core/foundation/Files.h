// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace vantiro::files {

/// How much a replaced file has to survive.
enum class Durability {
    lasting,  ///< Synced, and its folder after it: it is there after a power cut.
    passing,  ///< Not synced: readers see the old file or the new one, and after a power cut nobody needs it.
};

/// The bytes of a small file, or nothing if it cannot be read whole. Any thread.
[[nodiscard]] std::optional<QByteArray> read(const QString& path);

/// Puts `bytes` at `path` so that a reader sees the old content or the new, never a part: a temporary file beside the
/// target (mode 0600), then a rename. The temporary file is removed on every failure. Makes the parent folder. One
/// writer a file. Any thread.
[[nodiscard]] Result<void> replace(const QString& path, const QByteArray& bytes, Durability durability);

/// Makes a folder and those above it, each with mode 0700; one that exists is left as it is. Any thread.
[[nodiscard]] Result<void> makeFolder(const QString& path);

/// Both paths lead to one file or folder that is there, by way of symbolic or hard links too. Any thread.
[[nodiscard]] bool isSame(const QString& path, const QString& other);

/// Syncs the folder that holds `path`, so that a name in it survives a power cut. Any thread.
[[nodiscard]] Result<void> syncParentFolder(const QString& path);

}  // namespace vantiro::files
