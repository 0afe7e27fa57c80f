// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/InstallLocation.h"

#include <QDir>
#include <QStringList>

#include <algorithm>

namespace vantiro::InstallLocation {

using namespace Qt::StringLiterals;

Kind of(const QString& path, const QString& home)
{
    const QString clean = QDir::cleanPath(path);
    const auto isIn = [&clean](const QString& folder) { return clean.startsWith(folder + u'/'); };
    // The runtime of an AppImage mounts it as .mount_NAMEabcdef in the temporary folder.
    if (clean.contains(u"/.mount_"_s)) {
        return Kind::translocated;
    }
    const QStringList installed{u"/usr"_s, u"/opt"_s, u"/Applications"_s, QDir::cleanPath(home) + u"/.local"_s};
    if (std::ranges::any_of(installed, isIn)) {
        return Kind::applications;
    }
    const QStringList media{u"/media"_s, u"/run/media"_s, u"/mnt"_s, u"/Volumes"_s};
    return std::ranges::any_of(media, isIn) ? Kind::mountedVolume : Kind::elsewhere;
}

bool isTemporary(Kind kind)
{
    return kind == Kind::translocated || kind == Kind::mountedVolume;
}

}  // namespace vantiro::InstallLocation
