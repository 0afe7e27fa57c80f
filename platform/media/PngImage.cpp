// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/PngImage.h"

#include <png.h>

namespace vantiro::PngImage {

Result<QByteArray> encode(int width, int height, std::span<const std::uint8_t> pixels)
{
    using namespace Qt::StringLiterals;

    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    // Twice: for the size, then for the bytes.
    png_alloc_size_t size = 0;
    QByteArray bytes;
    for (const bool isForBytes : {false, true}) {
        bytes.resize(static_cast<qsizetype>(size));
        if (png_image_write_to_memory(&image, isForBytes ? bytes.data() : nullptr, &size, 0, pixels.data(), 0, nullptr)
            == 0) {
            return captureFailure(u"the picture cannot be made: %1"_s.arg(QString::fromUtf8(&image.message[0])));
        }
    }
    bytes.truncate(static_cast<qsizetype>(size));
    return bytes;
}

}  // namespace vantiro::PngImage
