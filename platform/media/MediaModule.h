// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/TakeReader.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <span>

namespace vantiro {

// What the module has to offer, built together with the program that loads it. Any thread.

/// FfmpegTakeReader::open
using OpenDecoder = void (*)(const QString& path, Result<std::unique_ptr<TakeReader>>& result);
/// PngImage::encode
using EncodePng = void (*)(int width, int height, std::span<const std::uint8_t> pixels, Result<QByteArray>& result);

// The names of these functions.
inline constexpr const char* openDecoderName = "vantiroOpenDecoder";
inline constexpr const char* encodePngName = "vantiroEncodePng";

}  // namespace vantiro
