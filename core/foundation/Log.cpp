// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Log.h"

#include <cstdio>

namespace vantiro {

void logLine(const QString& line)
{
    // One call, so that lines of several threads do not mix.
    std::fputs((line + QLatin1Char('\n')).toUtf8().constData(), stderr);
}

}  // namespace vantiro
