// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <optional>

namespace vantiro {

/// The container of a take. The audio inside is the same for both: linear PCM, 24-bit signed integers, packed.
enum class TakeFormat {
    caf,  ///< Core Audio Format: no limit of length, the default.
    wav,  ///< RIFF WAVE: ends at 4 GB, about 4 hours of stereo at 48 kHz.
};

inline constexpr std::array allTakeFormats{TakeFormat::caf, TakeFormat::wav};

/// "caf" or "wav": the word in JSON and on the command line, and the file's extension. Any thread.
[[nodiscard]] QString rawValue(TakeFormat format);

/// The format that exactly this word names. Any thread.
[[nodiscard]] std::optional<TakeFormat> takeFormat(QStringView rawValue);

}  // namespace vantiro
