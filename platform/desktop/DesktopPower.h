// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/PowerPlatform.h"

namespace vantiro {

/// Sleep is inhibited at logind, for the machine, and at the session's manager, for the desktop that would suspend it
/// by itself; either is enough. The scope is asked of the user's systemd.
class DesktopPower final : public PowerPlatform {
public:
    [[nodiscard]] std::unique_ptr<SleepInhibition> inhibitSleep(const QString& reason) override;
    [[nodiscard]] QStringList inhibitions(const QString& type) override;
    [[nodiscard]] bool moveToOwnScope() override;
};

}  // namespace vantiro
