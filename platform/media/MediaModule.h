// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyMedia.h"
#include "core/takes/TakeReader.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <span>

namespace vantiro {

/// What the module has to offer, built together with the program that loads it. Any thread.
struct MediaModule {
    TakeReader::DecoderOpener openDecoder = nullptr;  ///< FfmpegTakeReader::open
    CopyMedia copies;                                 ///< FfmpegEncoder and M4aFile
    /// PngImage::encode
    Result<QByteArray> (*encodePng)(int width, int height, std::span<const std::uint8_t> pixels) = nullptr;
};

/// Fills a MediaModule.
using DescribeMediaModule = void (*)(MediaModule& module);

/// The name of that function.
inline constexpr const char* describeMediaModuleName = "vantiroDescribeMediaModule";

}  // namespace vantiro
