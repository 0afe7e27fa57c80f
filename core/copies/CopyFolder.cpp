// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyFolder.h"

#include "core/copies/CopyJournal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <cerrno>

#include <sys/stat.h>

namespace vantiro {

Result<CopyFolder> CopyFolder::beside(const QString& destination)
{
    const QString name = CopyJournal::folderPrefix + QUuid::createUuid().toString(QUuid::WithoutBraces);
    CopyFolder folder(QFileInfo(destination).absoluteDir().filePath(name));
    CopyJournal::note(folder.m_path);
    if (::mkdir(QFile::encodeName(folder.m_path).constData(), 0700) != 0) {
        // The hidden name would tell nobody anything.
        return std::unexpected(errnoError(QFileInfo(folder.m_path).path(), errno));
    }
    return folder;
}

CopyFolder::~CopyFolder()
{
    // One that will not go stays in the journal, for a later start.
    if (!m_path.isEmpty() && CopyJournal::remove(m_path)) {
        CopyJournal::strike(m_path);
    }
}

}  // namespace vantiro
