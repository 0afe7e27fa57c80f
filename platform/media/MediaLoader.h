// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/TakeReader.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <span>

/// The platform's decoders and its writer of pictures, for a program that seldom needs them. Their libraries are loaded
/// with the first call and stay. All fail with a CaptureError if they cannot be loaded, and need a QCoreApplication;
/// any thread.
namespace vantiro::MediaLoader {

/// As FfmpegTakeReader::open.
[[nodiscard]] Result<std::unique_ptr<TakeReader>> open(const QString& path);

/// As PngImage::encode.
[[nodiscard]] Result<QByteArray> encodePng(int width, int height, std::span<const std::uint8_t> pixels);

}  // namespace vantiro::MediaLoader
