// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Log.h"

#include "core/foundation/Secrets.h"

#include <cstdio>

namespace vantiro {

void logLine(const QString& line)
{
    // One call, so that lines of several threads do not mix.
    std::fputs((Secrets::redacted(line) + QLatin1Char('\n')).toUtf8().constData(), stderr);
}

}  // namespace vantiro
