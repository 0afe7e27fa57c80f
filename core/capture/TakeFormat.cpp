// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/TakeFormat.h"

namespace vantiro {

QString rawValue(TakeFormat format)
{
    return format == TakeFormat::caf ? QStringLiteral("caf") : QStringLiteral("wav");
}

std::optional<TakeFormat> takeFormat(QStringView word)
{
    for (const TakeFormat format : allTakeFormats) {
        if (rawValue(format) == word) {
            return format;
        }
    }
    return std::nullopt;
}

}  // namespace vantiro
