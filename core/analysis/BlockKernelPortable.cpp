// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/BlockKernelLoops.h"

namespace vantiro {

namespace {

    /// What every 64-bit Arm has, and most others.
    struct Registers {
        static constexpr std::int64_t width = 2;
        using Doubles [[gnu::vector_size(16)]] = double;
        using Floats [[gnu::vector_size(16)]] = float;
        using Bits [[gnu::vector_size(16)]] = std::uint32_t;

        [[gnu::always_inline]] static Doubles widened(const float* from) noexcept
        {
            using Half [[gnu::vector_size(8)]] = float;
            Half loaded;
            __builtin_memcpy(&loaded, from, sizeof loaded);
            return __builtin_convertvector(loaded, Doubles);
        }
        /// Four frames of as many planes as there are lanes.
        [[gnu::always_inline]] static void widenFour(
            const float* const* planes, std::int64_t at, Doubles* frames) noexcept
        {
            for (std::int64_t frame = 0; frame < 4; ++frame) {
                frames[frame] = Doubles{planes[0][at + frame], planes[1][at + frame]};
            }
        }
    };

}  // namespace

constinit const BlockKernel baselineBlockKernel{
    .name = "baseline", .levels = levels<Registers>, .peak = peak<Registers>, .weigh = weigh<Registers>};

}  // namespace vantiro
