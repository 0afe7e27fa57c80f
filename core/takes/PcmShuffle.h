// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Packed little-endian 24-bit integers to floats by shuffles of whole registers.
namespace vantiro::pcmShuffle {

/// This processor has the shuffles. Any thread.
[[nodiscard]] bool isAvailable() noexcept;

/// Fills one or two planes from index `at` on with as many of the frames in `bytes` as whole registers give, and
/// returns how many those were. Only if isAvailable(). Any thread.
[[nodiscard]] std::int64_t fill(
    std::span<const std::byte> bytes, std::span<float* const> planes, std::int64_t at) noexcept;

}  // namespace vantiro::pcmShuffle
