// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/artwork/CoverArt.h"

namespace vantiro {

std::optional<QByteArray> coverArt()
{
    return std::nullopt;
}

}  // namespace vantiro
