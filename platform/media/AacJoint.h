// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/PacketRun.h"

#include <cstdint>
#include <optional>

/// Where a stream of AAC can go on with packets of another encoder that has read the same take from a later place.
namespace vantiro::AacJoint {

/// The number of the first packet to take from `after`, from `first` to `last`; nothing if none will do. A packet is
/// half of two windows that overlap, so the sound is whole where both encoders gave the packet before the joint the
/// same window (ISO/IEC 14496-3, 4.6.11: the shape of the first half of a window is that of the packet before). Mono
/// and stereo in one element. Any thread.
[[nodiscard]] std::optional<std::int64_t> find(
    const PacketRun& before, const PacketRun& after, std::int64_t first, std::int64_t last);

}  // namespace vantiro::AacJoint
