// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/DemoProof.h"

#include "core/capture/TakeHeader.h"
#include "platform/rig/MadeSet.h"

#include <QFile>

#include <array>
#include <cmath>
#include <vector>

namespace vantiro {

namespace {

    using Frame = std::array<std::int32_t, 2>;

    constexpr int sampleBytes = 3;
    constexpr float fullScale = 8388608.0F;
    /// Frames that have to agree before a place in the set counts as found.
    constexpr std::int64_t agreement = 256;
    constexpr std::int64_t searchSeconds = 60;

    std::int32_t sampleAt(const char* bytes)
    {
        const auto* octets = reinterpret_cast<const unsigned char*>(bytes);
        const std::uint32_t shifted = static_cast<std::uint32_t>(octets[0]) << 8U
            | static_cast<std::uint32_t>(octets[1]) << 16U | static_cast<std::uint32_t>(octets[2]) << 24U;
        return static_cast<std::int32_t>(shifted) >> 8;
    }

    Result<std::vector<Frame>> readFrames(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            return captureFailure(QStringLiteral("%1 cannot be read: %2").arg(path, file.errorString()));
        }
        const QByteArray start = file.read(TakeHeader::size);
        const auto header =
            TakeHeader::parse(std::as_bytes(std::span(start.constData(), static_cast<std::size_t>(start.size()))));
        if (!header || header->shape().channels != 2) {
            return captureFailure(QStringLiteral("%1 is no stereo take").arg(path));
        }
        const QByteArray audio = file.read(header->frames() * header->shape().frameBytes());
        std::vector<Frame> frames(static_cast<std::size_t>(audio.size() / header->shape().frameBytes()));
        const char* bytes = audio.constData();
        for (Frame& frame : frames) {
            frame = {sampleAt(bytes), sampleAt(bytes + sampleBytes)};
            bytes += std::ptrdiff_t{2} * sampleBytes;
        }
        return frames;
    }

    Frame played(const MadeSet& set, std::int64_t position)
    {
        const std::array<float, 2> samples = set.frame(position);
        return {static_cast<std::int32_t>(std::lrint(samples[0] * fullScale)),
            static_cast<std::int32_t>(std::lrint(samples[1] * fullScale))};
    }

}  // namespace

Result<DemoProof> compareWithSet(const QString& path, int sampleRate)
{
    const auto frames = readFrames(path);
    if (!frames) {
        return std::unexpected(frames.error());
    }
    const MadeSet set(sampleRate);
    const auto count = static_cast<std::int64_t>(frames->size());
    const auto agrees = [&](std::int64_t start) {
        for (std::int64_t frame = 0; frame < agreement; ++frame) {
            if ((*frames)[static_cast<std::size_t>(frame)] != played(set, start + frame)) {
                return false;
            }
        }
        return true;
    };
    std::int64_t start = 0;
    while (count >= agreement && start < searchSeconds * sampleRate && !agrees(start)) {
        ++start;
    }
    if (count < agreement || start == searchSeconds * sampleRate) {
        return captureFailure(QStringLiteral("%1 holds nothing that was played").arg(path));
    }
    DemoProof proof{.frames = count, .setSeconds = static_cast<double>(start) / sampleRate};
    for (std::int64_t frame = 0; frame < count; ++frame) {
        proof.differing += (*frames)[static_cast<std::size_t>(frame)] != played(set, start + frame) ? 1 : 0;
    }
    return proof;
}

}  // namespace vantiro
