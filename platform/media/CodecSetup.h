// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyEncoder.h"
#include "platform/media/FfmpegHandles.h"

namespace vantiro::CodecSetup {

/// An encoder for a copy, ready for its first frame: FLAC and Apple Lossless with 24 bits, AAC with 256000 bits a
/// second. Channels keep their order. Fails with CopyWords::cannotConvert if the format cannot keep the rate or the
/// channels. Any thread.
[[nodiscard]] Result<ffmpeg::Codec> open(const CopyEncoder::Plan& plan);

}  // namespace vantiro::CodecSetup
