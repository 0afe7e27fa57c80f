// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/TakeReader.h"

#include <QString>

#include <memory>

/// The platform's decoders of audio files: FFmpeg's.
namespace vantiro::FfmpegTakeReader {

/// Opens the first audio of a file in a container that FFmpeg reads, without what an encoder put around it. Frames are
/// the same wherever reading began; going back costs up to two seconds of decoding, in a few containers all that lies
/// before. What is damaged is left out. Fails with a SystemError if the file cannot be opened or memory is short, with
/// a CaptureError if there is no audio that can be decoded. Any thread.
[[nodiscard]] Result<std::unique_ptr<TakeReader>> open(const QString& path);

}  // namespace vantiro::FfmpegTakeReader
