// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/PcmPlanes.h"

#include "core/takes/PcmShuffle.h"

#include <QtEndian>

#include <cstring>
#include <type_traits>

namespace vantiro::pcmPlanes {

namespace {

    // All of these are powers of two, so multiplying is as exact as dividing.
    constexpr float scale16 = 1.0F / 32768.0F;
    constexpr float scale32 = 1.0F / 2147483648.0F;

    template <class Number, std::endian Order>
    Number numberAt(const std::byte* bytes)
    {
        return Order == std::endian::little ? qFromLittleEndian<Number>(bytes) : qFromBigEndian<Number>(bytes);
    }

    template <std::endian Order>
    struct Int16 {
        static constexpr std::size_t bytes = 2;
        static float at(const std::byte* sample)
        {
            return static_cast<float>(numberAt<std::int16_t, Order>(sample)) * scale16;
        }
    };

    template <std::endian Order>
    struct Int24 {
        static constexpr std::size_t bytes = 3;
        static float at(const std::byte* sample)
        {
            const auto byte = [sample](std::size_t index) { return std::to_integer<std::uint32_t>(sample[index]); };
            constexpr bool isLittle = Order == std::endian::little;
            // At the top of 32 bits the sign is in its place, and the eight zeros below cost no precision.
            const std::uint32_t bits = byte(isLittle ? 0 : 2) << 8U | byte(1) << 16U | byte(isLittle ? 2 : 0) << 24U;
            return static_cast<float>(static_cast<std::int32_t>(bits)) * scale32;
        }
    };

    template <std::endian Order>
    struct Int32 {
        static constexpr std::size_t bytes = 4;
        static float at(const std::byte* sample)
        {
            return static_cast<float>(numberAt<std::int32_t, Order>(sample)) * scale32;
        }
    };

    template <std::endian Order>
    struct Float32 {
        static constexpr std::size_t bytes = 4;
        static float at(const std::byte* sample)
        {
            return std::bit_cast<float>(numberAt<std::uint32_t, Order>(sample));
        }
    };

    template <std::endian Order>
    struct Float64 {
        static constexpr std::size_t bytes = 8;
        static float at(const std::byte* sample)
        {
            return static_cast<float>(std::bit_cast<double>(numberAt<std::uint64_t, Order>(sample)));
        }
    };

    /// Four packed samples of one channel at the top of 32 bits each. Looks one byte beyond the last of them.
    template <std::endian Order>
    auto fourInt24(const std::byte* first, std::size_t frameBytes)
    {
        using Bits [[gnu::vector_size(16)]] = std::uint32_t;
        const auto bits = [first, frameBytes](std::size_t frame) {
            const auto value = numberAt<std::uint32_t, Order>(first + frame * frameBytes);
            return Order == std::endian::little ? value << 8U : value & ~0xffU;
        };
        return Bits{bits(0), bits(1), bits(2), bits(3)};
    }

    /// Fills one plane as far as four frames at once go, and returns how many frames that were.
    template <std::endian Order>
    std::size_t fillFours(const std::byte* first, std::size_t frameBytes, std::size_t frames, float* plane)
    {
        using Numbers [[gnu::vector_size(16)]] = std::int32_t;
        using Floats [[gnu::vector_size(16)]] = float;
        std::size_t frame = 0;
        for (; frame + 4 < frames; frame += 4) {
            const auto bits = fourInt24<Order>(first + frame * frameBytes, frameBytes);
            const Floats values = __builtin_convertvector(reinterpret_cast<Numbers>(bits), Floats) * scale32;
            std::memcpy(plane + frame, &values, sizeof values);
        }
        return frame;
    }

    template <class Sample>
    void fillPlain(std::span<const std::byte> bytes, std::span<float* const> planes, std::int64_t at)
    {
        const std::size_t frameBytes = Sample::bytes * planes.size();
        const std::size_t frames = bytes.size() / frameBytes;
        for (std::size_t channel = 0; frames > 0 && channel < planes.size(); ++channel) {
            float* plane = planes[channel] + at;
            const std::byte* first = bytes.data() + channel * Sample::bytes;
            std::size_t frame = 0;
            if constexpr (std::is_same_v<Sample, Int24<std::endian::little>>) {
                frame = fillFours<std::endian::little>(first, frameBytes, frames, plane);
            } else if constexpr (std::is_same_v<Sample, Int24<std::endian::big>>) {
                frame = fillFours<std::endian::big>(first, frameBytes, frames, plane);
            }
            for (; frame < frames; ++frame) {
                plane[frame] = Sample::at(first + frame * frameBytes);
            }
        }
    }

    template <std::endian Order>
    void fillOrdered(
        PcmLayout::Sample sample, std::span<const std::byte> bytes, std::span<float* const> planes, std::int64_t at)
    {
        switch (sample) {
        case PcmLayout::Sample::int16:
            return fillPlain<Int16<Order>>(bytes, planes, at);
        case PcmLayout::Sample::int24:
            return fillPlain<Int24<Order>>(bytes, planes, at);
        case PcmLayout::Sample::int32:
            return fillPlain<Int32<Order>>(bytes, planes, at);
        case PcmLayout::Sample::float32:
            return fillPlain<Float32<Order>>(bytes, planes, at);
        case PcmLayout::Sample::float64:
            return fillPlain<Float64<Order>>(bytes, planes, at);
        }
    }

}  // namespace

Kernel fastestKernel()
{
    static const Kernel kernel =
        qgetenv("VANTIRO_KERNEL") != "baseline" && isAvailable(Kernel::shuffle) ? Kernel::shuffle : Kernel::plain;
    return kernel;
}

bool isAvailable(Kernel kernel)
{
    return kernel == Kernel::plain || pcmShuffle::isAvailable();
}

void fill(const PcmLayout& layout, std::span<const std::byte> bytes, std::span<float* const> planes, std::int64_t at,
    Kernel kernel)
{
    if (kernel == Kernel::shuffle && layout.sample == PcmLayout::Sample::int24 && layout.order == std::endian::little
        && planes.size() <= 2) {
        const std::int64_t done = pcmShuffle::fill(bytes, planes, at);
        bytes = bytes.subspan(static_cast<std::size_t>(done * layout.frameBytes()));
        at += done;
    }
    if (layout.order == std::endian::little) {
        fillOrdered<std::endian::little>(layout.sample, bytes, planes, at);
    } else {
        fillOrdered<std::endian::big>(layout.sample, bytes, planes, at);
    }
}

}  // namespace vantiro::pcmPlanes
