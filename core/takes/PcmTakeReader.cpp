// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/PcmTakeReader.h"

#include "core/capture/TakeChunks.h"
#include "core/takes/PcmPlanes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vantiro {

PcmTakeReader::PcmTakeReader(FileDescriptor file, const PcmLayout& layout, QString path)
    : m_file(std::move(file))
    , m_layout(layout)
    , m_format{layout.sampleRate, layout.channels, layout.frames}
    , m_path(std::move(path))
{ }

Result<std::int64_t> PcmTakeReader::read(std::int64_t first, std::span<float* const> planes, std::int64_t frames)
{
    if (first < 0 || first >= m_layout.frames) {
        return 0;
    }
    frames = std::min(frames, m_layout.frames - first);
    // Small enough to stay in the processor's nearest cache on the way to the planes; the largest frame is 2 KiB.
    std::array<std::byte, 32768> buffer;
    const std::int64_t frameBytes = m_layout.frameBytes();
    const std::int64_t chunkFrames = static_cast<std::int64_t>(buffer.size()) / frameBytes;
    const pcmPlanes::Kernel kernel = pcmPlanes::fastestKernel();
    std::int64_t done = 0;
    while (done < frames) {
        const std::int64_t wanted = std::min(chunkFrames, frames - done);
        const auto bytes = std::span(buffer).first(static_cast<std::size_t>(wanted * frameBytes));
        const auto count = readAt(m_file.get(), m_layout.offset + (first + done) * frameBytes, bytes);
        if (!count) {
            return std::unexpected(errnoError(m_path, count.error()));
        }
        const std::int64_t got = static_cast<std::int64_t>(*count) / frameBytes;
        const auto whole = std::span(buffer).first(static_cast<std::size_t>(got * frameBytes));
        pcmPlanes::fill(m_layout, whole, planes, done, kernel);
        done += got;
        if (got < wanted) {
            break;
        }
    }
    return done;
}

}  // namespace vantiro
