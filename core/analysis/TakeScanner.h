// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/BlockKernel.h"
#include "core/analysis/KWeighting.h"
#include "core/analysis/TakeOverview.h"
#include "core/takes/TakeReader.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace vantiro {

/// Frames from `start` up to but not including `end`.
struct FrameRun {
    std::int64_t start = 0;
    std::int64_t end = 0;

    bool operator==(const FrameRun&) const = default;
};

/// Adds a run that starts after all others: as part of the last one if there are at most `gapFrames` between them.
void joinRun(std::vector<FrameRun>& runs, FrameRun run, std::int64_t gapFrames);

/// How a take is cut, in frames. It follows from the format alone, so that a result depends on nothing else.
struct ScanPlan {
    TakeReader::Format format;
    std::int64_t blockFrames = 1;    ///< 10 ms. All else but the step is a multiple of it.
    std::int64_t stepFrames = 1;     ///< 100 ms of loudness.
    std::int64_t chunkFrames = 1;    ///< Read at once.
    std::int64_t warmUpFrames = 0;   ///< What the weighting filters need to forget that they started at rest.
    std::int64_t segmentFrames = 1;  ///< Scanned as one piece.
    std::int64_t clipGapFrames = 0;
    std::optional<KWeighting> weighting;  ///< Absent at rates without loudness.

    /// 15 seconds.
    static constexpr std::int64_t usualSegmentBlocks = 1500;

    /// `clipGap` in seconds.
    [[nodiscard]] static ScanPlan of(
        const TakeReader::Format& format, double clipGap, std::int64_t segmentBlocks = usualSegmentBlocks);
};

/// A stretch of a take and what was found in it.
struct ScannedSegment {
    struct SlicePart {
        std::int64_t slice = 0;
        float peak = 0;
        std::int64_t clippedSamples = 0;
    };

    std::int64_t first = 0;   ///< A multiple of the block.
    std::int64_t length = 0;  ///< Frames to read, at least 1.
    std::int64_t frames = 0;  ///< Frames read: fewer if the take ends here.
    std::span<double> power;  ///< Mean square of each block; room for all of `length`.
    std::span<float> peak;    ///< Largest magnitude of each block.
    std::vector<FrameRun> clipRuns;
    std::int64_t clippedSamples = 0;
    std::vector<SlicePart> slices;    ///< Of the overview, ascending.
    std::vector<double> stepSquares;  ///< Of all weighted samples, for each step that the segment has a part of.
};

/// Looks at every sample of a segment once: levels, clips, overview and loudness in one go while it is in the cache.
/// One thread a scanner.
class TakeScanner {
public:
    /// Segments that are scanned side by side at most, which the filters of a wide processor do at the price of one.
    static constexpr std::size_t mostSegments = 2;

    /// A magnitude that no audio reaches. In a mean or a sum, beside a larger one nothing else would count.
    static constexpr float largestSample = 0x1p20F;

    enum class Start {
        atRest,  ///< The filters are warmed up on the frames before.
        goesOn,  ///< The only segment follows the one before.
    };

    /// `slices` tells where the slices of the overview lie. What is referred to outlives the scanner.
    TakeScanner(
        TakeReader& reader, const ScanPlan& plan, const TakeOverview::Builder& slices, const BlockKernel& kernel);

    /// Fails as the reader does, or with "cancelled" soon after `isStopped` tells so.
    [[nodiscard]] Result<void> scan(
        std::span<ScannedSegment> segments, Start start, const std::function<bool()>& isStopped);

private:
    using Counts = std::array<std::int64_t, mostSegments>;

    [[nodiscard]] float* plane(std::size_t segment, std::int64_t channel);
    [[nodiscard]] Result<std::int64_t> fill(
        std::size_t index, const ScannedSegment& segment, std::int64_t time, std::int64_t frames);
    [[nodiscard]] PlaneLevels measure(std::size_t index, std::int64_t at, std::int64_t count);
    void repair(std::size_t index, std::int64_t at, std::int64_t count);
    void note(std::size_t index, ScannedSegment& segment, std::int64_t frame, std::int64_t at, std::int64_t count);
    void noteSlices(std::size_t index, ScannedSegment& segment, std::int64_t frame, std::int64_t at, std::int64_t count,
        float peak);
    [[nodiscard]] std::int64_t noteClips(
        std::size_t index, ScannedSegment& segment, std::int64_t frame, std::int64_t at, std::int64_t count);
    void weighBlock(std::span<ScannedSegment> segments, std::int64_t time, std::int64_t at, const Counts& counts);
    [[nodiscard]] std::array<double, mostSegments> weigh(std::size_t segmentCount, std::int64_t at, std::int64_t count);

    TakeReader& m_reader;
    const ScanPlan& m_plan;
    const TakeOverview::Builder& m_slices;
    const BlockKernel& m_kernel;
    std::vector<float> m_samples;
    std::vector<WeightingState> m_states;  ///< One for each two channels.
};

}  // namespace vantiro
