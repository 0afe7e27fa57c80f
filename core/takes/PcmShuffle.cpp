// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/PcmShuffle.h"

#include <tmmintrin.h>

namespace vantiro::pcmShuffle {

namespace {

    constexpr std::size_t registerBytes = 16;
    constexpr std::size_t samplesBytes = 12;  ///< Four samples, which fill a register once they are widened.
    constexpr std::int64_t samples = 4;

    /// Four integers at the top of 32 bits each, as floats.
    [[gnu::target("ssse3")]] inline __m128 widened(const std::byte* bytes, __m128i order) noexcept
    {
        const __m128i packed = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
        return _mm_mul_ps(_mm_cvtepi32_ps(_mm_shuffle_epi8(packed, order)), _mm_set1_ps(1.0F / 2147483648.0F));
    }

    [[gnu::target("ssse3")]] std::int64_t fillOne(std::span<const std::byte> bytes, float* plane) noexcept
    {
        const __m128i order = _mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11);
        std::int64_t frame = 0;
        // A load takes in more than it uses, and nothing may be read behind the end.
        for (std::size_t index = 0; index + registerBytes <= bytes.size(); index += samplesBytes) {
            _mm_storeu_ps(plane + frame, widened(bytes.data() + index, order));
            frame += samples;
        }
        return frame;
    }

    [[gnu::target("ssse3")]] std::int64_t fillTwo(
        std::span<const std::byte> bytes, float* first, float* second) noexcept
    {
        // Two frames, the first channel of both in front.
        const __m128i order = _mm_setr_epi8(-1, 0, 1, 2, -1, 6, 7, 8, -1, 3, 4, 5, -1, 9, 10, 11);
        std::int64_t frame = 0;
        for (std::size_t index = 0; index + samplesBytes + registerBytes <= bytes.size(); index += 2 * samplesBytes) {
            const __m128 early = widened(bytes.data() + index, order);
            const __m128 late = widened(bytes.data() + index + samplesBytes, order);
            _mm_storeu_ps(first + frame, _mm_movelh_ps(early, late));
            _mm_storeu_ps(second + frame, _mm_movehl_ps(late, early));
            frame += samples;
        }
        return frame;
    }

}  // namespace

bool isAvailable() noexcept
{
    return __builtin_cpu_supports("ssse3") != 0;
}

std::int64_t fill(std::span<const std::byte> bytes, std::span<float* const> planes, std::int64_t at) noexcept
{
    return planes.size() == 1 ? fillOne(bytes, planes[0] + at) : fillTwo(bytes, planes[0] + at, planes[1] + at);
}

}  // namespace vantiro::pcmShuffle
