// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/FileDescriptor.h"
#include "core/foundation/Result.h"

#include <QString>

#include <bit>
#include <cstdint>
#include <optional>

#include <sys/stat.h>

namespace vantiro {

/// What the samples of linear PCM are, and where in their file they lie: interleaved, packed, without gaps.
struct PcmLayout {
    enum class Sample {
        int16,
        int24,
        int32,
        float32,
        float64,
    };

    static constexpr double minSampleRate = 1;          ///< Hz
    static constexpr double maxSampleRate = 1'000'000;  ///< Hz
    static constexpr int maxChannels = 256;

    Sample sample = Sample::int16;
    std::endian order = std::endian::little;
    double sampleRate = 0;    ///< Hz, minSampleRate to maxSampleRate.
    int channels = 0;         ///< 1 to maxChannels.
    std::int64_t offset = 0;  ///< Of the first frame, in bytes.
    std::int64_t frames = 0;  ///< Whole frames that are in the file.

    bool operator==(const PcmLayout&) const = default;

    /// Audio of any kind keeps to these limits: what is beyond them comes from a damaged file.
    [[nodiscard]] static bool isPossible(double sampleRate, std::int64_t channels);
    [[nodiscard]] static std::int64_t sampleBytes(Sample sample);
    /// Bytes of one frame.
    [[nodiscard]] std::int64_t frameBytes() const { return sampleBytes(sample) * channels; }
    [[nodiscard]] double seconds() const { return static_cast<double>(frames) / sampleRate; }
};

/// A file that is open for reading, and the linear PCM in it.
struct PcmFile {
    FileDescriptor descriptor;
    struct stat status = {};          ///< As the file was when it was opened.
    std::optional<PcmLayout> layout;  ///< Nothing if the file is no CAF or WAV of a kind that PcmLayout can say.

    /// Opens a file and looks for its audio. Reads the first 4 KiB in one call, and further on only as far as chunks
    /// stand in front of the audio. A size that a recorder left open, one larger than the file, and a smaller one
    /// behind which more audio follows give way to what the file holds. Fails with the SystemError of the call that
    /// failed. Any thread.
    [[nodiscard]] static Result<PcmFile> open(const QString& path);
};

}  // namespace vantiro
