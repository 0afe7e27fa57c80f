// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/ExportFormat.h"

#include <algorithm>

namespace vantiro {

QString rawValue(ExportFormat format)
{
    switch (format) {
    case ExportFormat::wav:
        return QStringLiteral("wav");
    case ExportFormat::flac:
        return QStringLiteral("flac");
    case ExportFormat::alac:
        return QStringLiteral("alac");
    case ExportFormat::aac:
        break;
    }
    return QStringLiteral("aac");
}

std::optional<ExportFormat> exportFormat(QStringView word)
{
    const auto* found =
        std::ranges::find_if(allExportFormats, [word](ExportFormat format) { return rawValue(format) == word; });
    return found == allExportFormats.end() ? std::nullopt : std::optional(*found);
}

}  // namespace vantiro
