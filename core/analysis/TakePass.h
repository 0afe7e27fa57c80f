// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/BlockKernel.h"
#include "core/analysis/TakeAnalysis.h"
#include "core/analysis/TakeScanner.h"

namespace vantiro {

/// What one pass over the audio of a take finds.
struct ScannedTake {
    std::int64_t frames = 0;       ///< Frames that there were.
    std::int64_t blockFrames = 1;  ///< 10 ms.
    std::vector<double> power;     ///< Mean square of each block, the last one perhaps short.
    std::vector<float> peak;       ///< Largest magnitude of each block.
    std::vector<FrameRun> clipRuns;
    std::int64_t clippedSamples = 0;
    std::optional<double> loudness;  ///< LUFS
    TakeOverview overview;
};

/// How a pass is done. Kernel and segments change nothing but the last digits of the loudness, threads nothing at all.
struct PassMeans {
    const BlockKernel* kernel = &BlockKernel::usual();
    unsigned threads = 0;  ///< At most; 0 for as many as the processor runs at once.
    std::int64_t segmentBlocks = ScanPlan::usualSegmentBlocks;  ///< Blocks of 10 ms that are scanned as one piece.
};

/// Blocks in four days. A pass needs 28 bytes for each, and a header with a damaged rate may tell of years.
inline constexpr std::int64_t mostBlocks = std::int64_t{4} * 24 * 3600 * 100;

/// Scans a take on several threads if the reader allows, the calling one among them. Fails as the reader does, with
/// "cancelled", and for more than mostBlocks. A sample that is not a number counts as 0, one beyond
/// TakeScanner::largestSample as full scale.
[[nodiscard]] Result<ScannedTake> scanTake(TakeReader& reader, double clipGap, std::int64_t overviewSlices,
    const TakeAnalysis::Progress& progress = {}, const PassMeans& means = {});

}  // namespace vantiro
