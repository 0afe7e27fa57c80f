// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/TakeOverview.h"

#include "core/analysis/BlockKernel.h"
#include "core/takes/TakeReader.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    std::int64_t clippedOf(const float* samples, std::int64_t frames)
    {
        return std::count_if(
            samples, samples + frames, [](float sample) { return std::abs(sample) >= TakeOverview::clipLevel; });
    }

}  // namespace

TakeOverview::Builder::Builder(std::int64_t total, std::int64_t slices)
    : m_total(std::max<std::int64_t>(1, total))
    , m_slices(std::clamp<std::int64_t>(slices, 1, m_total))
    , m_peaks(static_cast<std::size_t>(m_slices))
    , m_clipped(static_cast<std::size_t>(m_slices))
{ }

std::int64_t TakeOverview::Builder::sliceAt(std::int64_t frame) const
{
    const std::int64_t slice = frame * m_slices / m_total;
    // A slice starts at the whole frame below its exact border.
    return firstFrame(slice + 1) <= frame ? slice + 1 : slice;
}

void TakeOverview::Builder::raise(std::int64_t slice, float peak, std::int64_t clippedSamples)
{
    const auto index = static_cast<std::size_t>(slice);
    m_peaks[index] = std::max(m_peaks[index], peak);
    m_clipped[index] = m_clipped[index] || clippedSamples > 0;
    m_clippedSamples += clippedSamples;
}

void TakeOverview::Builder::add(std::span<const float* const> planes, std::int64_t frames)
{
    const BlockKernel& kernel = BlockKernel::usual();
    const std::int64_t start = m_frame;
    const std::int64_t end = std::min(start + frames, m_total);
    m_frame += frames;
    for (std::int64_t frame = start; frame < end;) {
        const std::int64_t slice = sliceAt(frame);
        const std::int64_t pieceEnd = std::min(firstFrame(slice + 1), end);
        for (const float* const plane : planes) {
            const float* const piece = plane + (frame - start);
            const float peak = kernel.peak(piece, pieceEnd - frame);
            raise(slice, peak, peak >= clipLevel ? clippedOf(piece, pieceEnd - frame) : 0);
        }
        frame = pieceEnd;
    }
}

TakeOverview TakeOverview::Builder::finish() const
{
    TakeOverview overview{.peaks = m_peaks, .clips = {}, .clippedSamples = m_clippedSamples};
    for (std::size_t slice = 0; slice < m_peaks.size(); ++slice) {
        overview.peaks[slice] = std::min(1.0F, m_peaks[slice]);
        if (m_clipped[slice]) {
            overview.clips.push_back(static_cast<std::int64_t>(slice));
        }
    }
    return overview;
}

Result<TakeOverview> TakeOverview::compute(const QString& path, std::int64_t slices)
{
    const auto reader = TakeReader::open(path);
    if (!reader) {
        return std::unexpected(reader.error());
    }
    // Small enough to stay in a cache of the processor.
    constexpr std::int64_t chunkSamples = 16384;
    const TakeReader::Format& format = (*reader)->format();
    const std::int64_t chunk = std::max<std::int64_t>(1, chunkSamples / format.channels);
    std::vector<float> samples(static_cast<std::size_t>(chunk * format.channels));
    std::vector<float*> planes;
    planes.reserve(static_cast<std::size_t>(format.channels));
    for (int channel = 0; channel < format.channels; ++channel) {
        planes.push_back(samples.data() + channel * chunk);
    }
    const std::vector<const float*> read(planes.begin(), planes.end());
    Builder builder(format.frames, slices);
    for (std::int64_t first = 0; first < format.frames;) {
        const Result<std::int64_t> frames = (*reader)->read(first, planes, std::min(chunk, format.frames - first));
        if (!frames) {
            return std::unexpected(frames.error());
        }
        if (*frames == 0) {
            break;
        }
        builder.add(read, *frames);
        first += *frames;
    }
    return builder.finish();
}

}  // namespace vantiro
