// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/PowerPlatform.h"

#include <QString>

#include <memory>

namespace vantiro {

/// What keeps the surroundings from ending a take: a unit of its own for this process, and a machine that stays awake.
/// Both are asked for on a thread of their own, since whoever answers may take seconds or never do; a take goes on
/// without them, and the log says so once. Ends with this object.
class TakeProtection {
public:
    TakeProtection(const QString& reason, const std::shared_ptr<PowerPlatform>& power);
    ~TakeProtection();

    TakeProtection(const TakeProtection&) = delete;
    TakeProtection& operator=(const TakeProtection&) = delete;

private:
    struct Shared;

    std::shared_ptr<Shared> m_shared;
};

}  // namespace vantiro
