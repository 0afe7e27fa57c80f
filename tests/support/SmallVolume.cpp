// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/SmallVolume.h"

#include <QDir>
#include <QFile>

#include <sys/mount.h>

namespace vantiro::test {

std::unique_ptr<SmallVolume> SmallVolume::mount(const QString& folder, int mebibytes)
{
    const QByteArray path = QFile::encodeName(folder);
    const QByteArray options = "size=" + QByteArray::number(mebibytes) + "m";
    const bool isMounted =
        QDir().mkpath(folder) && ::mount("tmpfs", path.constData(), "tmpfs", 0, options.constData()) == 0;
    return isMounted ? std::unique_ptr<SmallVolume>(new SmallVolume(path)) : nullptr;
}

SmallVolume::~SmallVolume()
{
    // Detached, since a recorder of a test that failed may still have its take open.
    ::umount2(m_folder.constData(), MNT_DETACH);
}

bool SmallVolume::makeReadOnly() const
{
    return ::mount(nullptr, m_folder.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

}  // namespace vantiro::test
