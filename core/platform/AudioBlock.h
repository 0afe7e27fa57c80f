// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace vantiro {

/// One buffer of a block: interleaved 32-bit float samples, 1.0 is full scale.
struct AudioBuffer {
    const float* samples = nullptr;  ///< Absent if the platform delivered nothing for this buffer.
    std::int64_t bytes = 0;
};

/// What the audio thread receives at once. All it points to is valid during the call only.
struct AudioBlock {
    std::span<const AudioBuffer> buffers;
    std::optional<double> sampleTime;   ///< Frame number of the first frame on the source's own continuous clock.
    std::uint64_t hostNanoseconds = 0;  ///< CLOCK_MONOTONIC at the arrival of the block; never 0.
};

/// Receives blocks on the platform's audio thread, one call at a time.
class AudioBlockHandler {
public:
    virtual ~AudioBlockHandler() = default;

    AudioBlockHandler(const AudioBlockHandler&) = delete;
    AudioBlockHandler& operator=(const AudioBlockHandler&) = delete;

    /// RT safe.
    virtual void process(const AudioBlock& block) noexcept = 0;

protected:
    AudioBlockHandler() = default;
};

}  // namespace vantiro
