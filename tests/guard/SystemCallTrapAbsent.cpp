// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/guard/SystemCallTrap.h"

namespace vantiro::callbackGuard {

void prepareSystemCallTrap() noexcept { }

bool isSystemCallTrapMissing() noexcept
{
    return true;
}

void forbidSystemCalls() noexcept { }

void allowSystemCalls() noexcept { }

}  // namespace vantiro::callbackGuard
