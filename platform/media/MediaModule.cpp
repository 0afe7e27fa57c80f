// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/MediaModule.h"

#include "platform/media/FfmpegTakeReader.h"

extern "C" Q_DECL_EXPORT void vantiroOpenDecoder(
    const QString& path, vantiro::Result<std::unique_ptr<vantiro::TakeReader>>& result)
{
    result = vantiro::FfmpegTakeReader::open(path);
}
