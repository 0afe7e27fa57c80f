// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/TakeProtection.h"

#include "core/capture/SleepGuard.h"
#include "core/foundation/Log.h"

#include <mutex>
#include <optional>
#include <thread>

namespace vantiro {

struct TakeProtection::Shared {
    std::mutex mutex;
    bool isOver = false;
    std::optional<SleepGuard> guard;
};

TakeProtection::TakeProtection(const QString& reason, const std::shared_ptr<PowerPlatform>& power)
    : m_shared(std::make_shared<Shared>())
{
    // The end of a take never waits for this thread, so it shares what it needs and is on its own.
    std::thread([shared = m_shared, reason, power] {
        if (!power->moveToOwnScope()) {
            logLine(QStringLiteral("no unit of its own for the recorder"));
        }
        std::optional<SleepGuard> guard = SleepGuard::make(reason, *power);
        const std::scoped_lock lock(shared->mutex);
        if (!shared->isOver) {
            shared->guard = std::move(guard);
        }
    }).detach();
}

TakeProtection::~TakeProtection()
{
    const std::scoped_lock lock(m_shared->mutex);
    m_shared->isOver = true;
    m_shared->guard.reset();
}

}  // namespace vantiro
