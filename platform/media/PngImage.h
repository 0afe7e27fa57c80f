// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QByteArray>

#include <cstdint>
#include <span>

namespace vantiro::PngImage {

/// The bytes of a PNG file with this picture: rows from the top, three bytes (red, green, blue) a pixel. Any thread.
[[nodiscard]] Result<QByteArray> encode(int width, int height, std::span<const std::uint8_t> pixels);

}  // namespace vantiro::PngImage
