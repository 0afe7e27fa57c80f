// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

/// 32-bit float to 24-bit signed integers, three bytes each, little endian.
namespace vantiro::packedPcm {

inline constexpr std::size_t sampleBytes = 3;

namespace detail {

    // One register of the smallest machine that we build for: the compiler's own loops swing with its version.
    inline constexpr std::size_t lanes = 4;
    using Floats = float __attribute__((vector_size(lanes * sizeof(float))));
    using Integers = std::int32_t __attribute__((vector_size(lanes * sizeof(std::int32_t))));
    using Pairs = std::uint64_t __attribute__((vector_size(lanes * sizeof(std::int32_t))));
    static_assert(std::endian::native == std::endian::little, "the bytes of a register are stored as they lie");

    inline Integers rounded(Floats samples) noexcept
    {
        constexpr float fullScale = 8388608.0F;
        constexpr std::int32_t infinity = 0x7F80'0000;
        const Floats value = samples * fullScale;
        const Integers bits = reinterpret_cast<Integers>(value);
        const Integers sign = bits & INT32_MIN;
        // Beyond this, both ways of rounding end in the largest number of that sign. Not-a-number is on neither side.
        const Integers magnitude = bits & INT32_MAX;
        const Integers within = reinterpret_cast<Floats>(magnitude) < fullScale - 0.5F;
        const Integers beyond = ~within & (magnitude <= infinity);
        // A float of the magnitude 2^23 to 2^24 has no bits behind the point, so adding 2^23 with the value's own sign
        // rounds to nearest even, which taking it off again leaves.
        const Floats shift = reinterpret_cast<Floats>(reinterpret_cast<Integers>(Floats{} + fullScale) | sign);
        const Floats whole = reinterpret_cast<Floats>(bits & within) + shift - shift;
        const Integers largest = (bits >> 31) ^ 0x7F'FFFF;
        return __builtin_convertvector(whole, Integers) | (largest & beyond);
    }

    /// Packs four samples into 14 bytes, of which the last two are of no meaning.
    inline void packFour(const float* samples, std::byte* out) noexcept
    {
        Floats values;
        std::memcpy(&values, samples, sizeof values);
        // Two neighbours move together in half a register; the zeros behind the first two give way to the others.
        const Pairs pairs = reinterpret_cast<Pairs>(rounded(values));
        const Pairs packed = (pairs & 0xFF'FFFF) | (pairs >> 8U & 0xFFFF'FF00'0000);
        const std::uint64_t first = packed[0];
        const std::uint64_t second = packed[1];
        std::memcpy(out, &first, sizeof first);
        std::memcpy(out + 2 * sampleBytes, &second, sizeof second);
    }

}  // namespace detail

/// Packs samples (1.0 is full scale) by one rule: x * 8388608, not-a-number as 0, held to [-8388608, 8388607], rounded
/// to nearest even, no dither. What came from 24 bits comes out the same. `out` has room for three bytes a sample.
/// Any thread.
inline void pack(std::span<const float> samples, std::span<std::byte> out) noexcept
{
    using detail::lanes;
    std::size_t index = 0;
    for (; index + lanes < samples.size(); index += lanes) {
        detail::packFour(samples.data() + index, out.data() + index * sampleBytes);
    }
    // The last ones go by way of a copy: nothing may be read or written behind the ends.
    const std::size_t left = samples.size() - index;
    std::array<float, lanes> last{};
    std::array<std::byte, lanes * sampleBytes + 2> packed{};
    if (left > 0) {
        std::memcpy(last.data(), samples.data() + index, left * sizeof(float));
        detail::packFour(last.data(), packed.data());
        std::memcpy(out.data() + index * sampleBytes, packed.data(), left * sampleBytes);
    }
}

}  // namespace vantiro::packedPcm
