// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/analysis/MemoryTake.h"

#include <optional>

namespace vantiro::test {

/// Integrated loudness as ITU-R BS.1770 and EBU R128 define it, one channel after the other in 64-bit floats, with
/// nothing of the program's own: what its results are held against.
[[nodiscard]] std::optional<double> plainLoudness(double sampleRate, const Planes& planes);

}  // namespace vantiro::test
