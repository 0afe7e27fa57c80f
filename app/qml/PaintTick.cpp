// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/PaintTick.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace vantiro {

PaintTick::PaintTick()
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.callOnTimeout([this] { beat(); });
}

PaintTick& PaintTick::shared()
{
    // It goes with the application: a timer must not outlive the event loop that it was made in.
    static PaintTick* tick = [] {
        auto* made = new PaintTick;
        QObject::connect(qApp, &QObject::destroyed, [made] { made->m_timer.stop(); });
        return made;
    }();
    return *tick;
}

void PaintTick::ask(Client& client)
{
    if (std::ranges::find(m_waiting, &client) != m_waiting.end()) {
        return;
    }
    m_waiting.push_back(&client);
    if (m_timer.isActive()) {
        return;
    }
    // On the old beat as long as it is alive, at once after a rest.
    const Moment now = std::chrono::steady_clock::now();
    m_due = std::max(m_due + period, now);
    m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(m_due - now));
}

void PaintTick::leave(Client& client)
{
    std::erase(m_waiting, &client);
    std::ranges::replace(m_served, &client, static_cast<Client*>(nullptr));
}

void PaintTick::beat()
{
    m_served = std::exchange(m_waiting, {});
    const Moment now = std::chrono::steady_clock::now();
    // A late beat moves those after it: what took too long gets no second one at once.
    if (now - m_due > period / 4) {
        m_due = now;
    }
    // A client may leave, or make another leave, in the midst of it: its place is empty then.
    for (Client* client : m_served) {
        if (client != nullptr) {
            client->paintTick(now);
        }
    }
    m_served.clear();
}

}  // namespace vantiro
