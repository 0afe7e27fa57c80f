// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/PeakScan.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vantiro {

namespace {

    // A running maximum of floats is a chain that compilers will not split by themselves: four lanes in four
    // accumulators keep the units busy. Even lanes hold the first of two channels, odd lanes the second.
    using Lanes = float __attribute__((vector_size(16)));
    constexpr std::int64_t peakLanes = 4;
    constexpr std::int64_t unroll = 4;

    Lanes magnitudes(const float* samples) noexcept
    {
        using Bits = std::uint32_t __attribute__((vector_size(16)));
        Bits bits;
        std::memcpy(&bits, samples, sizeof bits);
        bits &= 0x7fffffffU;
        Lanes lanes;
        std::memcpy(&lanes, &bits, sizeof lanes);
        return lanes;
    }

    /// The larger of the two in each lane; `held` where `sample` is not a number.
    Lanes larger(Lanes sample, Lanes held) noexcept
    {
        return sample > held ? sample : held;
    }

    struct EvenOdd {
        float even = 0;
        float odd = 0;
    };

    EvenOdd scanEvenOdd(const float* samples, std::int64_t count) noexcept
    {
        Lanes held[unroll] = {};
        std::int64_t index = 0;
        for (; index + unroll * peakLanes <= count; index += unroll * peakLanes) {
            for (std::int64_t part = 0; part < unroll; ++part) {
                held[part] = larger(magnitudes(samples + index + part * peakLanes), held[part]);
            }
        }
        const Lanes top = larger(larger(held[0], held[1]), larger(held[2], held[3]));
        EvenOdd peaks{.even = std::max(top[0], top[2]), .odd = std::max(top[1], top[3])};
        for (; index < count; ++index) {
            float& peak = index % 2 == 0 ? peaks.even : peaks.odd;
            const float magnitude = std::abs(samples[index]);
            peak = magnitude > peak ? magnitude : peak;
        }
        return peaks;
    }

    float scanChannel(const float* samples, std::int64_t channel, std::int64_t frames, std::int64_t channels) noexcept
    {
        float peak = 0;
        for (std::int64_t frame = 0; frame < frames; ++frame) {
            const float magnitude = std::abs(samples[frame * channels + channel]);
            peak = magnitude > peak ? magnitude : peak;
        }
        return peak;
    }

}  // namespace

ChannelPeaks scanPeaks(const float* interleaved, std::int64_t frames, std::int64_t channels) noexcept
{
    const EvenOdd peaks = scanEvenOdd(interleaved, frames * channels);
    const float all = std::max(peaks.even, peaks.odd);
    if (channels == 1) {
        return {.all = all, .first = all, .second = 0};
    }
    if (channels == 2) {
        return {.all = all, .first = peaks.even, .second = peaks.odd};
    }
    return {.all = all,
        .first = scanChannel(interleaved, 0, frames, channels),
        .second = scanChannel(interleaved, 1, frames, channels)};
}

}  // namespace vantiro
