// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/TakeReader.h"

#include <QString>

#include <memory>

/// The platform's decoders, for a program that seldom needs them.
namespace vantiro::MediaLoader {

/// As FfmpegTakeReader::open, whose libraries are loaded with the first call and stay. Fails with a CaptureError if
/// they cannot be loaded. Needs a QCoreApplication; any thread.
[[nodiscard]] Result<std::unique_ptr<TakeReader>> open(const QString& path);

}  // namespace vantiro::MediaLoader
