// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/ExportFormat.h"

#include <QCoreApplication>

#include <algorithm>

namespace vantiro {

namespace {

    struct FormatWords {
        Q_DECLARE_TR_FUNCTIONS(ExportFormat)
    };

}  // namespace

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

QString label(ExportFormat format)
{
    switch (format) {
    case ExportFormat::wav:
        return FormatWords::tr("WAV, 24-bit");
    case ExportFormat::flac:
        return FormatWords::tr("FLAC, lossless");
    case ExportFormat::alac:
        return FormatWords::tr("Apple Lossless");
    case ExportFormat::aac:
        break;
    }
    return FormatWords::tr("AAC, 256 kbps");
}

QString fileExtension(ExportFormat format)
{
    return format == ExportFormat::wav || format == ExportFormat::flac ? rawValue(format) : QStringLiteral("m4a");
}

std::optional<ExportFormat> exportFormat(QStringView word)
{
    const auto* found =
        std::ranges::find_if(allExportFormats, [word](ExportFormat format) { return rawValue(format) == word; });
    return found == allExportFormats.end() ? std::nullopt : std::optional(*found);
}

}  // namespace vantiro
