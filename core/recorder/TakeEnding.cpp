// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/TakeEnding.h"

namespace vantiro {

std::optional<QString> endedBecause(TakeEnding ending)
{
    switch (ending) {
    case TakeEnding::deviceLost:
        return QStringLiteral("device-lost");
    case TakeEnding::sourceQuit:
        return QStringLiteral("source-quit");
    case TakeEnding::rateChanged:
        return QStringLiteral("rate-changed");
    case TakeEnding::inputStalled:
        return QStringLiteral("input-stalled");
    case TakeEnding::diskFull:
        return QStringLiteral("disk-full");
    case TakeEnding::wavLimit:
        return QStringLiteral("wav-limit");
    case TakeEnding::stopped:
    case TakeEnding::writeFailed:
        break;
    }
    return std::nullopt;
}

}  // namespace vantiro
