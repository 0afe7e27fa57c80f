// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/BlockKernel.h"

namespace vantiro {

const BlockKernel* BlockKernel::wide()
{
    return nullptr;
}

}  // namespace vantiro
