// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace vantiro {

/// Keeps the machine awake while it lives.
class SleepInhibition {
public:
    virtual ~SleepInhibition() = default;

    SleepInhibition(const SleepInhibition&) = delete;
    SleepInhibition& operator=(const SleepInhibition&) = delete;

protected:
    SleepInhibition() = default;
};

/// What a recorder asks of the system beside audio: to stay awake, and to be left alone. The calls block for some
/// seconds at the most and belong on a thread of their own. Any thread.
class PowerPlatform {
public:
    virtual ~PowerPlatform() = default;

    PowerPlatform(const PowerPlatform&) = delete;
    PowerPlatform& operator=(const PowerPlatform&) = delete;

    /// Keeps the machine from falling asleep; the screen may go dark. Nothing if nobody grants it.
    [[nodiscard]] virtual std::unique_ptr<SleepInhibition> inhibitSleep(const QString& reason) = 0;
    /// The reasons that this process gave for what it holds against `type`, such as "sleep".
    [[nodiscard]] virtual QStringList inhibitions(const QString& type) = 0;
    /// Moves this process into a unit of its own, so that it does not end with the program that started it. False if
    /// there is no manager that does so.
    [[nodiscard]] virtual bool moveToOwnScope() = 0;

protected:
    PowerPlatform() = default;
};

}  // namespace vantiro
