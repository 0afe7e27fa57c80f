// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QString>

#include <cstdint>

/// Takes for the benchmarks of the analysis: 24-bit stereo WAV at 48 kHz. All fail with the SystemError of the call.
namespace vantiro::madeTakes {

/// Sines and bursts of noise for `sounding` seconds, then digital silence up to `seconds`.
[[nodiscard]] Result<void> write(const QString& path, std::int64_t seconds, std::int64_t sounding);
/// Silence that takes no room on the disk.
[[nodiscard]] Result<void> writeSparse(const QString& path, std::int64_t seconds);
/// Takes of a second each, named as a recorder names them.
[[nodiscard]] Result<void> writeMany(const QString& folder, int count);

}  // namespace vantiro::madeTakes
