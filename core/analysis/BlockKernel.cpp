// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/BlockKernel.h"

#include <cstdlib>
#include <string_view>

namespace vantiro {

const BlockKernel& BlockKernel::baseline()
{
    return baselineBlockKernel;
}

const BlockKernel& BlockKernel::usual()
{
    static const BlockKernel& kernel = [] -> const BlockKernel& {
        const char* const forced = std::getenv("VANTIRO_KERNEL");
        const BlockKernel* const best = wide();
        return best == nullptr || (forced != nullptr && std::string_view(forced) == baseline().name) ? baseline()
                                                                                                     : *best;
    }();
    return kernel;
}

}  // namespace vantiro
