// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Where a program lies, as far as it matters to whoever wants to start it later. Any thread.
namespace vantiro::InstallLocation {

enum class Kind {
    applications,   ///< Where programs are installed.
    translocated,   ///< Inside an image that is mounted for as long as the program runs.
    mountedVolume,  ///< On a medium that can be taken out.
    elsewhere,
};

/// Judges by the path alone, which is absolute; `home` is the user's home folder.
[[nodiscard]] Kind of(const QString& path, const QString& home);

/// The program will not be there for good.
[[nodiscard]] bool isTemporary(Kind kind);

}  // namespace vantiro::InstallLocation
