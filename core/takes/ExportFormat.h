// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <optional>

namespace vantiro {

/// What a copy of a take can be.
enum class ExportFormat {
    wav,
    flac,
    alac,  ///< Apple Lossless
    aac,
};

inline constexpr std::array allExportFormats{
    ExportFormat::wav, ExportFormat::flac, ExportFormat::alac, ExportFormat::aac};

/// "wav", "flac", "alac" or "aac": the word in the settings and on the command line. Any thread.
[[nodiscard]] QString rawValue(ExportFormat format);

/// "WAV, 24-bit", "FLAC, lossless", "Apple Lossless" or "AAC, 256 kbps": what people read. Any thread.
[[nodiscard]] QString label(ExportFormat format);

/// "wav", "flac" or "m4a", which two formats share. Any thread.
[[nodiscard]] QString fileExtension(ExportFormat format);

/// The format that exactly this word names. Any thread.
[[nodiscard]] std::optional<ExportFormat> exportFormat(QStringView rawValue);

}  // namespace vantiro
