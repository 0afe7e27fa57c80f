// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/TakeScanner.h"

#include "core/analysis/LoudnessMeter.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

void joinRun(std::vector<FrameRun>& runs, FrameRun run, std::int64_t gapFrames)
{
    if (runs.empty() || run.start - runs.back().end > gapFrames) {
        runs.push_back(run);
    } else {
        runs.back().end = run.end;
    }
}

ScanPlan ScanPlan::of(const TakeReader::Format& format, double clipGap, std::int64_t segmentBlocks)
{
    constexpr std::int64_t warmUpBlocks = 20;
    // What both segments read at once stays in the second cache of any processor.
    constexpr std::int64_t mostChunkBlocks = 20;
    constexpr std::int64_t mostChunkSamples = 20000;
    const std::int64_t block = std::max<std::int64_t>(1, std::llround(format.sampleRate / 100));
    const std::int64_t chunkBlocks =
        std::clamp<std::int64_t>(mostChunkSamples / (block * format.channels), 1, mostChunkBlocks);
    return {
        .format = format,
        .blockFrames = block,
        .stepFrames = loudnessStepFrames(format.sampleRate),
        .chunkFrames = chunkBlocks * block,
        .warmUpFrames = warmUpBlocks * block,
        .segmentFrames = segmentBlocks * block,
        .clipGapFrames = static_cast<std::int64_t>(format.sampleRate * clipGap),
        .weighting = KWeighting::atRate(format.sampleRate),
    };
}

TakeScanner::TakeScanner(
    TakeReader& reader, const ScanPlan& plan, const TakeOverview::Builder& slices, const BlockKernel& kernel)
    : m_reader(reader)
    , m_plan(plan)
    , m_slices(slices)
    , m_kernel(kernel)
    , m_samples(mostSegments * static_cast<std::size_t>(plan.chunkFrames * plan.format.channels))
    , m_states(static_cast<std::size_t>((plan.format.channels + 1) / 2))
{ }

Result<void> TakeScanner::scan(std::span<ScannedSegment> segments, Start start, const std::function<bool()>& isStopped)
{
    std::int64_t longest = 0;
    for (ScannedSegment& segment : segments) {
        longest = std::max(longest, segment.length);
        const std::int64_t last = segment.first + segment.length - 1;
        segment.stepSquares.assign(
            static_cast<std::size_t>(last / m_plan.stepFrames - segment.first / m_plan.stepFrames + 1), 0.0);
    }
    const bool warmsUp = start == Start::atRest && m_plan.weighting && segments.back().first > 0;
    if (start == Start::atRest) {
        std::ranges::fill(m_states, WeightingState{});
    }
    std::int64_t frames = 0;
    // Times count from the first frame of each segment; what is before it is there for the filters alone.
    for (std::int64_t time = warmsUp ? -m_plan.warmUpFrames : 0; time < longest; time += frames) {
        frames = std::min(m_plan.chunkFrames, time < 0 ? -time : longest - time);
        if (isStopped()) {
            return captureFailure(QStringLiteral("cancelled"));
        }
        Counts filled{};
        for (std::size_t index = 0; index < segments.size(); ++index) {
            const Result<std::int64_t> read = fill(index, segments[index], time, frames);
            if (!read) {
                return std::unexpected(read.error());
            }
            filled[index] = *read;
            segments[index].frames += time < 0 ? 0 : *read;
        }
        for (std::int64_t at = 0; at < frames; at += m_plan.blockFrames) {
            Counts counts{};
            for (std::size_t index = 0; index < segments.size(); ++index) {
                counts[index] = std::clamp<std::int64_t>(filled[index] - at, 0, m_plan.blockFrames);
                if (counts[index] > 0) {
                    note(index, segments[index], time + at, at, counts[index]);
                }
            }
            weighBlock(segments, time, at, counts);
        }
    }
    return {};
}

float* TakeScanner::plane(std::size_t segment, std::int64_t channel)
{
    return m_samples.data()
        + (static_cast<std::int64_t>(segment) * m_plan.format.channels + channel) * m_plan.chunkFrames;
}

Result<std::int64_t> TakeScanner::fill(
    std::size_t index, const ScannedSegment& segment, std::int64_t time, std::int64_t frames)
{
    std::vector<float*> planes;
    planes.reserve(static_cast<std::size_t>(m_plan.format.channels));
    for (std::int64_t channel = 0; channel < m_plan.format.channels; ++channel) {
        planes.push_back(plane(index, channel));
    }
    if (time < 0 && segment.first == 0) {
        // Filters at rest stay so in silence.
        for (float* const silent : planes) {
            std::fill_n(silent, frames, 0.0F);
        }
        return frames;
    }
    if (time < 0) {
        return m_reader.read(segment.first + time, planes, frames);
    }
    const std::int64_t left = segment.length - time;
    const bool hasEnded = segment.frames < time;
    return hasEnded || left <= 0 ? 0 : m_reader.read(segment.first + time, planes, std::min(frames, left));
}

PlaneLevels TakeScanner::measure(std::size_t index, std::int64_t at, std::int64_t count)
{
    PlaneLevels sum;
    for (std::int64_t channel = 0; channel < m_plan.format.channels; ++channel) {
        const PlaneLevels found = m_kernel.levels(plane(index, channel) + at, count);
        sum.squares += found.squares;
        sum.peak = std::max(sum.peak, found.peak);
    }
    return sum;
}

void TakeScanner::repair(std::size_t index, std::int64_t at, std::int64_t count)
{
    for (std::int64_t channel = 0; channel < m_plan.format.channels; ++channel) {
        for (float& sample : std::span(plane(index, channel) + at, static_cast<std::size_t>(count))) {
            if (std::abs(sample) > largestSample) {
                sample = std::copysign(1.0F, sample);
            } else if (std::isnan(sample)) {
                sample = 0;
            }
        }
    }
}

void TakeScanner::note(
    std::size_t index, ScannedSegment& segment, std::int64_t time, std::int64_t at, std::int64_t count)
{
    PlaneLevels levels = measure(index, at, count);
    if (!std::isfinite(levels.squares) || levels.peak > largestSample) {
        // One such sample would stay in the filters, and in every mean.
        repair(index, at, count);
        levels = measure(index, at, count);
    }
    if (time < 0) {
        return;
    }
    const auto block = static_cast<std::size_t>(time / m_plan.blockFrames);
    segment.power[block] = levels.squares / static_cast<double>(count * m_plan.format.channels);
    segment.peak[block] = levels.peak;
    noteSlices(index, segment, segment.first + time, at, count, levels.peak);
}

void TakeScanner::noteSlices(
    std::size_t index, ScannedSegment& segment, std::int64_t frame, std::int64_t at, std::int64_t count, float peak)
{
    for (std::int64_t done = 0; done < count;) {
        const std::int64_t slice = m_slices.sliceAt(frame + done);
        const bool isInside = slice < m_slices.slices();
        const std::int64_t left = count - done;
        const std::int64_t piece = isInside ? std::min(m_slices.firstFrame(slice + 1) - frame - done, left) : left;
        float piecePeak = peak;
        if (piece < count) {
            piecePeak = 0;
            for (std::int64_t channel = 0; channel < m_plan.format.channels; ++channel) {
                piecePeak = std::max(piecePeak, m_kernel.peak(plane(index, channel) + at + done, piece));
            }
        }
        const std::int64_t clipped =
            piecePeak >= TakeOverview::clipLevel ? noteClips(index, segment, frame + done, at + done, piece) : 0;
        if (isInside) {
            if (segment.slices.empty() || segment.slices.back().slice != slice) {
                segment.slices.push_back({.slice = slice});
            }
            ScannedSegment::SlicePart& part = segment.slices.back();
            part.peak = std::max(part.peak, piecePeak);
            part.clippedSamples += clipped;
        }
        done += piece;
    }
}

std::int64_t TakeScanner::noteClips(
    std::size_t index, ScannedSegment& segment, std::int64_t frame, std::int64_t at, std::int64_t count)
{
    const std::int64_t before = segment.clippedSamples;
    for (std::int64_t done = 0; done < count; ++done) {
        std::int64_t clipped = 0;
        for (std::int64_t channel = 0; channel < m_plan.format.channels; ++channel) {
            clipped += std::abs(plane(index, channel)[at + done]) >= TakeOverview::clipLevel ? 1 : 0;
        }
        if (clipped > 0) {
            segment.clippedSamples += clipped;
            joinRun(segment.clipRuns, {frame + done, frame + done + 1}, m_plan.clipGapFrames);
        }
    }
    return segment.clippedSamples - before;
}

void TakeScanner::weighBlock(
    std::span<ScannedSegment> segments, std::int64_t time, std::int64_t at, const Counts& counts)
{
    if (!m_plan.weighting) {
        return;
    }
    const std::int64_t most = std::ranges::max(counts);
    for (std::int64_t from = 0; from < most;) {
        const std::int64_t now = time + at + from;
        std::int64_t to = most;
        if (time >= 0) {
            // A block is cut where a step or the take ends in one of the segments.
            for (std::size_t index = 0; index < segments.size(); ++index) {
                if (from < counts[index]) {
                    const std::int64_t inStep = (segments[index].first + now) % m_plan.stepFrames;
                    to = std::min({to, counts[index], from + m_plan.stepFrames - inStep});
                }
            }
        }
        const std::array<double, mostSegments> squares = weigh(segments.size(), at + from, to - from);
        for (std::size_t index = 0; index < segments.size(); ++index) {
            if (time >= 0 && from < counts[index]) {
                const std::int64_t first = segments[index].first;
                const std::int64_t step = (first + now) / m_plan.stepFrames - first / m_plan.stepFrames;
                segments[index].stepSquares[static_cast<std::size_t>(step)] += squares[index];
            }
        }
        from = to;
    }
}

std::array<double, TakeScanner::mostSegments> TakeScanner::weigh(
    std::size_t segmentCount, std::int64_t at, std::int64_t count)
{
    std::array<double, mostSegments> squares{};
    for (std::int64_t first = 0; first < m_plan.format.channels; first += 2) {
        // Lanes without a channel or a segment of their own run along with another's.
        const bool hasSecond = first + 1 < m_plan.format.channels;
        const std::int64_t second = hasSecond ? first + 1 : first;
        const std::size_t other = segmentCount > 1 ? 1 : 0;
        const float* const planes[weighedLanes]{
            plane(0, first) + at, plane(0, second) + at, plane(other, first) + at, plane(other, second) + at};
        double sums[weighedLanes]{};
        m_kernel.weigh(*m_plan.weighting, planes, count, m_states[static_cast<std::size_t>(first / 2)], sums);
        squares[0] += hasSecond ? sums[0] + sums[1] : sums[0];
        squares[1] += hasSecond ? sums[2] + sums[3] : sums[2];
    }
    return squares;
}

}  // namespace vantiro
