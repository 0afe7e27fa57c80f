// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/PcmShuffle.h"

namespace vantiro::pcmShuffle {

bool isAvailable() noexcept
{
    return false;
}

std::int64_t fill(
    std::span<const std::byte> /*bytes*/, std::span<float* const> /*planes*/, std::int64_t /*at*/) noexcept
{
    return 0;
}

}  // namespace vantiro::pcmShuffle
