// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/TemporaryFile.h"

#include "core/copies/CopyJournal.h"

#include <QUuid>

namespace vantiro {

TemporaryFile::TemporaryFile(const QString& start, const QString& ending)
    : m_path(start + QUuid::createUuid().toString(QUuid::WithoutBraces) + ending)
{
    CopyJournal::note(m_path);
}

TemporaryFile::~TemporaryFile()
{
    // One that will not go stays in the journal, for a later start.
    if (!m_path.isEmpty() && CopyJournal::remove(m_path)) {
        CopyJournal::strike(m_path);
    }
}

}  // namespace vantiro
