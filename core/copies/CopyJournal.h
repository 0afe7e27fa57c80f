// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1StringView>
#include <QString>

/// Remembers, in exports.json of the support folder, the temporary folders and files of copies that are being made, so
/// that those of a process that was killed are found again wherever they lie. Several processes at once; any thread.
namespace vantiro::CopyJournal {

/// What the names of temporary folders begin with.
inline constexpr QLatin1StringView folderPrefix{".vantiro-export-"};
/// What the names of temporary files begin with; a UUID and an ending follow.
inline constexpr QLatin1StringView taggingPrefix{".tagging-"};  ///< ".m4a"
inline constexpr QLatin1StringView stagingPrefix{".vantiro-"};  ///< ".m4a" or ".part"

/// Notes a folder or file that this process is going to make; an absolute path. A journal that cannot be written is
/// logged and stops no copy.
void note(const QString& path);
/// Forgets one that is gone.
void strike(const QString& path);

/// Removes a temporary folder and all in it, or a temporary file, never through a symbolic link and nothing that has
/// another name or is of another kind. Whether it is gone, or was never there.
[[nodiscard]] bool remove(const QString& path);

/// Removes what processes left that are gone, and forgets it. What cannot be removed now, or lies on a disk that is not
/// mounted, is kept in mind for the next time. May wait for a slow disk.
void sweep();

}  // namespace vantiro::CopyJournal
