// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QByteArray>

#include <cstdint>
#include <span>

/// The platform's decoders, encoders and its writer of pictures, for a program that seldom needs them. Their libraries
/// are loaded when one is first needed, and stay. All fail with a CaptureError if they cannot be loaded, and need a
/// QCoreApplication; any thread.
namespace vantiro::MediaLoader {

/// Takes are read, and copies made, with what the libraries can do, from now on.
void install();

/// As PngImage::encode.
[[nodiscard]] Result<QByteArray> encodePng(int width, int height, std::span<const std::uint8_t> pixels);

}  // namespace vantiro::MediaLoader
