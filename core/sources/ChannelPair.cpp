// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/ChannelPair.h"

namespace vantiro {

std::optional<std::vector<std::int64_t>> channelPair(
    const SourceRef& source, std::int64_t first, std::int64_t available)
{
    const bool isMissing = source.kind == SourceRef::Kind::device && available > 0 && available < first + 1;
    return first <= 1 || isMissing ? std::nullopt : std::optional(std::vector{first, first + 1});
}

}  // namespace vantiro
