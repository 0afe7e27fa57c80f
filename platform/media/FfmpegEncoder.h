// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyEncoder.h"

#include <cstdint>

/// FLAC, and Apple Lossless and AAC in M4A. A take that can be read at several places at once is cut into stretches
/// that are encoded side by side, on all processors: FLAC and Apple Lossless come out as one encoder would have made
/// them, AAC as good.
namespace vantiro::FfmpegEncoder {

/// How takes are cut.
struct Cutting {
    double losslessSeconds = 2;  ///< Length of a stretch.
    double aacSeconds = 30;      ///< The same for AAC, where each one encodes 40 packets for nothing.
    std::int64_t leadIn = 24;    ///< Packets that an AAC encoder gets before those that count, to find its pace.
    std::int64_t overlap = 16;   ///< Packets that two stretches of AAC both have, to find a place where they can meet.
    int threads = 0;             ///< 0 is as many as there are processors.
};

/// As CopyMedia::openEncoder.
[[nodiscard]] Result<std::unique_ptr<CopyEncoder>> open(const CopyEncoder::Plan& plan);
[[nodiscard]] Result<std::unique_ptr<CopyEncoder>> open(const CopyEncoder::Plan& plan, const Cutting& cutting);

}  // namespace vantiro::FfmpegEncoder
