// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/BlockKernelLoops.h"

#include <emmintrin.h>

namespace vantiro {

namespace {

    /// What every x86-64 has.
    struct Registers {
        static constexpr std::int64_t width = 2;
        using Doubles [[gnu::vector_size(16)]] = double;
        using Floats [[gnu::vector_size(16)]] = float;
        using Bits [[gnu::vector_size(16)]] = std::uint32_t;

        [[gnu::always_inline]] static Doubles widened(const float* from) noexcept
        {
            // A conversion of generic vectors comes out as single ones.
            return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadu_si64(from)));
        }
        /// Four frames of as many planes as there are lanes.
        [[gnu::always_inline]] static void widenFour(
            const float* const* planes, std::int64_t at, Doubles* frames) noexcept
        {
            const __m128 a = _mm_loadu_ps(planes[0] + at);
            const __m128 b = _mm_loadu_ps(planes[1] + at);
            const __m128 early = _mm_unpacklo_ps(a, b);
            const __m128 late = _mm_unpackhi_ps(a, b);
            frames[0] = _mm_cvtps_pd(early);
            frames[1] = _mm_cvtps_pd(_mm_movehl_ps(early, early));
            frames[2] = _mm_cvtps_pd(late);
            frames[3] = _mm_cvtps_pd(_mm_movehl_ps(late, late));
        }
    };

}  // namespace

constinit const BlockKernel baselineBlockKernel{
    .name = "baseline", .levels = levels<Registers>, .peak = peak<Registers>, .weigh = weigh<Registers>};

}  // namespace vantiro
