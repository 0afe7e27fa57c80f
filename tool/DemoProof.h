// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QString>

#include <cstdint>

namespace vantiro {

/// What a comparison of a take with the made set found.
struct DemoProof {
    std::int64_t frames = 0;     ///< Frames in the file.
    double setSeconds = 0;       ///< Where in the set the take begins.
    std::int64_t differing = 0;  ///< Frames that are not, bit by bit, what was played.
};

/// Reads a stereo take and compares every sample with what the virtual interface played. Fails if the file is no take,
/// or holds nothing that was played.
[[nodiscard]] Result<DemoProof> compareWithSet(const QString& path, int sampleRate);

}  // namespace vantiro
