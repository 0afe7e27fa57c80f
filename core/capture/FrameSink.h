// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace vantiro {

/// Where a capture hands its audio. One producer thread.
class FrameSink {
public:
    /// What became of a block.
    struct Offer {
        enum class Status {
            accepted,  ///< All the frames were taken.
            full,      ///< No room: none of the frames was taken, and they are lost.
            ended,     ///< The take is over: only the first `taken` frames belong to it, and nothing was lost.
        };
        using enum Status;

        Status status = accepted;
        std::int64_t taken = 0;  ///< Frames that will reach the take, from the start of the block.

        bool operator==(const Offer&) const = default;
    };

    virtual ~FrameSink() = default;

    FrameSink(const FrameSink&) = delete;
    FrameSink& operator=(const FrameSink&) = delete;

    /// Takes `frames` frames of interleaved 32-bit float samples (1.0 is full scale). A block is cut only where the
    /// take ends; for want of room it is refused whole. RT safe.
    virtual Offer offer(const float* interleaved, std::int64_t frames) noexcept = 0;

protected:
    FrameSink() = default;
};

}  // namespace vantiro
