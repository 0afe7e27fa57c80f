// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/LoginFlow.h"

#include <utility>

namespace vantiro {

LoginFlow::LoginFlow(AppModel& model, Scheduler& scheduler, Services services)
    : m_model(model)
    , m_scheduler(scheduler)
    , m_services(std::move(services))
{ }

void LoginFlow::refresh()
{
    m_asks = true;
    work();
}

void LoginFlow::setOpensAtLogin(bool on)
{
    m_wanted = on;
    work();
}

void LoginFlow::work()
{
    if (m_model.isSample() || m_works || (!m_asks && !m_wanted)) {
        return;
    }
    m_works = true;
    m_asks = false;
    m_scheduler.background(
        Scheduler::Work::brief,
        [services = m_services, wanted = std::exchange(m_wanted, std::nullopt)] {
            Answer answer;
            if (wanted) {
                answer.isRefused = *wanted && services.isTemporary();
                if (const auto set = answer.isRefused ? Result<void>() : services.set(*wanted); !set) {
                    answer.failure = set.error();
                }
            }
            answer.isOn = services.isOn();
            return answer;
        },
        m_guard([this](const Answer& answer) {
            m_works = false;
            m_model.setOpensAtLogin(answer.isOn);
            if (answer.isRefused) {
                m_model.setError(tr("Move Vantiro to Applications first, then turn on Open at Login."));
            } else if (answer.failure) {
                m_model.setError(tr("macOS did not change the login item: %1").arg(errorText(*answer.failure)));
            }
            work();
        }));
}

}  // namespace vantiro
