// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/SleepGuard.h"

namespace vantiro {

std::optional<SleepGuard> SleepGuard::make(const QString& reason, PowerPlatform& power)
{
    auto inhibition = power.inhibitSleep(reason);
    return inhibition ? std::optional(SleepGuard(std::move(inhibition))) : std::nullopt;
}

QStringList SleepGuard::heldByThisProcess(const QString& type, PowerPlatform& power)
{
    return power.inhibitions(type);
}

}  // namespace vantiro
