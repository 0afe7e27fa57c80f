// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/BlockKernel.h"

namespace vantiro {

const BlockKernel* BlockKernel::wide()
{
    const bool isThere = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
    return isThere ? &avx2BlockKernel : nullptr;
}

}  // namespace vantiro
