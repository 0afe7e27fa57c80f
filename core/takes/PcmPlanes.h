// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/PcmFile.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// Interleaved PCM to planes of 32-bit floats, 1.0 is full scale: integers divided by 2 to the power of their bits less
/// one, floats as they are. 16 and 24-bit integers come through exactly.
namespace vantiro::pcmPlanes {

enum class Kernel {
    plain,
    shuffle,  ///< Packed 24-bit mono and stereo, several frames at once. Same results, bit by bit.
};

/// The fastest kernel of this processor; VANTIRO_KERNEL=baseline in the environment, as it was at the first call, asks
/// for the plain one. Any thread.
[[nodiscard]] Kernel fastestKernel();
/// This processor can run the kernel. Any thread.
[[nodiscard]] bool isAvailable(Kernel kernel);

/// Puts the frames in `bytes`, which holds whole ones and nothing else, into the planes, one a channel, from index `at`
/// on. Any thread.
void fill(const PcmLayout& layout, std::span<const std::byte> bytes, std::span<float* const> planes, std::int64_t at,
    Kernel kernel);

}  // namespace vantiro::pcmPlanes
