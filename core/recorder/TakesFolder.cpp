// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/TakesFolder.h"

#include "core/recorder/VantiroPaths.h"

#include <QDir>

namespace vantiro::TakesFolder {

QString in(const SettingsStore& settings)
{
    const QString stored = settings.value(QStringLiteral("takesFolder")).toString();
    return QDir::isAbsolutePath(stored) ? QDir::cleanPath(stored) : VantiroPaths::takes();
}

QString current()
{
    return in(SettingsStore(VantiroPaths::settingsFile(), {}, SettingsStore::BrokenFile::leave));
}

}  // namespace vantiro::TakesFolder
