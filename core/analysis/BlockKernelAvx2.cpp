// SPDX-License-Identifier: GPL-3.0-or-later
// Built with -mavx2 -mfma: the functions of this file run on such processors only.
#include "core/analysis/BlockKernelLoops.h"

#include <immintrin.h>

namespace vantiro {

namespace {

    struct Registers {
        static constexpr std::int64_t width = 4;
        using Doubles [[gnu::vector_size(32)]] = double;
        using Floats [[gnu::vector_size(32)]] = float;
        using Bits [[gnu::vector_size(32)]] = std::uint32_t;

        [[gnu::always_inline]] static Doubles widened(const float* from) noexcept
        {
            // A conversion of generic vectors comes out as two halves by way of memory.
            return _mm256_cvtps_pd(_mm_loadu_ps(from));
        }
        /// Four frames of as many planes as there are lanes.
        [[gnu::always_inline]] static void widenFour(
            const float* const* planes, std::int64_t at, Doubles* frames) noexcept
        {
            __m128 a = _mm_loadu_ps(planes[0] + at);
            __m128 b = _mm_loadu_ps(planes[1] + at);
            __m128 c = _mm_loadu_ps(planes[2] + at);
            __m128 d = _mm_loadu_ps(planes[3] + at);
            _MM_TRANSPOSE4_PS(a, b, c, d);
            frames[0] = _mm256_cvtps_pd(a);
            frames[1] = _mm256_cvtps_pd(b);
            frames[2] = _mm256_cvtps_pd(c);
            frames[3] = _mm256_cvtps_pd(d);
        }
    };

}  // namespace

constinit const BlockKernel avx2BlockKernel{
    .name = "avx2", .levels = levels<Registers>, .peak = peak<Registers>, .weigh = weigh<Registers>};

}  // namespace vantiro
