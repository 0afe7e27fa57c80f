// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/Guard.h"
#include "app/model/Scheduler.h"
#include "core/foundation/Result.h"

#include <QCoreApplication>
#include <QString>

#include <functional>
#include <optional>

namespace vantiro {

/// Whether the application starts when the user logs in, kept outside the settings: the model shows what the system
/// says. Main thread only.
class LoginFlow {
    Q_DECLARE_TR_FUNCTIONS(LoginFlow)

public:
    /// The system's list of what starts at a login; called on other threads, one call at a time.
    struct Services {
        std::function<bool()> isOn;
        std::function<Result<void>(bool on)> set;
        std::function<bool()> isTemporary;  ///< The program lies where it will not be found again.
    };

    /// The model and the scheduler outlive this.
    LoginFlow(AppModel& model, Scheduler& scheduler, Services services);

    LoginFlow(const LoginFlow&) = delete;
    LoginFlow& operator=(const LoginFlow&) = delete;

    /// Asks the system anew: others may change it.
    void refresh();
    /// A refusal is shown as an alert.
    void setOpensAtLogin(bool on);

private:
    /// What the system said, and what kept it from what was wanted.
    struct Answer {
        bool isOn = false;
        std::optional<Error> failure = {};
        bool isRefused = false;
    };

    void work();

    AppModel& m_model;
    Scheduler& m_scheduler;
    Services m_services;
    std::optional<bool> m_wanted;
    bool m_asks = false;  ///< Once more after what is under way.
    bool m_works = false;
    Guard m_guard;
};

}  // namespace vantiro
