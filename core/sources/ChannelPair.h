// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/sources/SourceRef.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vantiro {

/// The channels to record from a source whose pair begins at `first`, counted from 1. Absent means that the capture
/// decides: for the first pair, and for one that a device of `available` channels does not have. How many channels a
/// program has is known only once it is opened, so its pair is taken as it is; so is that of a device whose channels
/// are unknown (0). Any thread.
[[nodiscard]] std::optional<std::vector<std::int64_t>> channelPair(
    const SourceRef& source, std::int64_t first, std::int64_t available);

}  // namespace vantiro
