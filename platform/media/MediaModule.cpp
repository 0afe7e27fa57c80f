// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/MediaModule.h"

#include "platform/media/FfmpegEncoder.h"
#include "platform/media/FfmpegTakeReader.h"
#include "platform/media/M4aFile.h"
#include "platform/media/PngImage.h"

extern "C" Q_DECL_EXPORT void vantiroDescribeMediaModule(vantiro::MediaModule& module)
{
    using namespace vantiro;
    module = {.openDecoder = FfmpegTakeReader::open,
        .copies = {.openEncoder = FfmpegEncoder::open, .inspect = M4aFile::inspect, .remux = M4aFile::remux},
        .encodePng = PngImage::encode};
}
