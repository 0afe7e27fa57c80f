// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/PngFile.h"

#include <QSaveFile>

#include <png.h>

namespace vantiro::PngFile {

using namespace Qt::StringLiterals;

Result<QByteArray> encode(const Picture& picture)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    // Twice: for the size, then for the bytes.
    png_alloc_size_t size = 0;
    QByteArray bytes;
    for (const bool isForBytes : {false, true}) {
        bytes.resize(static_cast<qsizetype>(size));
        if (png_image_write_to_memory(
                &image, isForBytes ? bytes.data() : nullptr, &size, 0, picture.pixels.data(), 0, nullptr)
            == 0) {
            return captureFailure(u"the picture cannot be made: %1"_s.arg(QString::fromUtf8(&image.message[0])));
        }
    }
    bytes.truncate(static_cast<qsizetype>(size));
    return bytes;
}

Result<void> write(const Picture& picture, const QString& path)
{
    const auto bytes = encode(picture);
    if (!bytes) {
        return std::unexpected(bytes.error());
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size() || !file.commit()) {
        return captureFailure(u"%1 cannot be written: %2"_s.arg(path, file.errorString()));
    }
    return {};
}

}  // namespace vantiro::PngFile
