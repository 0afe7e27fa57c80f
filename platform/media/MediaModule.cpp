// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/MediaModule.h"

#include "platform/media/FfmpegTakeReader.h"
#include "platform/media/PngImage.h"

extern "C" Q_DECL_EXPORT void vantiroOpenDecoder(
    const QString& path, vantiro::Result<std::unique_ptr<vantiro::TakeReader>>& result)
{
    result = vantiro::FfmpegTakeReader::open(path);
}

extern "C" Q_DECL_EXPORT void vantiroEncodePng(
    int width, int height, std::span<const std::uint8_t> pixels, vantiro::Result<QByteArray>& result)
{
    result = vantiro::PngImage::encode(width, height, pixels);
}
