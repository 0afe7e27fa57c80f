// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/Take.h"

#include <QFileInfo>

namespace vantiro {

QString Take::name() const
{
    return QFileInfo(path).completeBaseName();
}

QString Take::fileName() const
{
    return QFileInfo(path).fileName();
}

}  // namespace vantiro
