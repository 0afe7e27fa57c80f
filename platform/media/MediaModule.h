// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/TakeReader.h"

#include <QString>

#include <memory>

namespace vantiro {

/// What the module of decoders has to offer, built together with the program that loads it. Any thread.
using OpenDecoder = void (*)(const QString& path, Result<std::unique_ptr<TakeReader>>& result);

/// The name of that function.
inline constexpr const char* openDecoderName = "vantiroOpenDecoder";

}  // namespace vantiro
