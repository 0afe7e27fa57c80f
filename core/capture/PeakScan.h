// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace vantiro {

/// Largest magnitudes of a run of interleaved samples, linear.
struct ChannelPeaks {
    float all = 0;
    float first = 0;
    float second = 0;  ///< 0 if there is one channel only.
};

/// The peaks of `frames` frames of `channels` interleaved channels (1 or more). A sample that is not a number counts as
/// 0. RT safe.
[[nodiscard]] ChannelPeaks scanPeaks(const float* interleaved, std::int64_t frames, std::int64_t channels) noexcept;

}  // namespace vantiro
