// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/PowerPlatform.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace vantiro {

/// Keeps the machine awake for as long as it lives. Any thread, one at a time.
class SleepGuard {
public:
    /// Nothing if the system refuses; whoever records goes on without. Blocks for some seconds at the most.
    [[nodiscard]] static std::optional<SleepGuard> make(const QString& reason, PowerPlatform& power);

    /// Lets go. May be called again.
    void release() { m_inhibition.reset(); }

    /// The reasons of what this process holds against `type`, such as "sleep".
    [[nodiscard]] static QStringList heldByThisProcess(const QString& type, PowerPlatform& power);

private:
    explicit SleepGuard(std::unique_ptr<SleepInhibition> inhibition) : m_inhibition(std::move(inhibition)) { }

    std::unique_ptr<SleepInhibition> m_inhibition;
};

}  // namespace vantiro
