// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "platform/desktop/HotKey.h"

#include <QElapsedTimer>
#include <QObject>

#include <functional>
#include <memory>

namespace vantiro {

/// The hot key as the user wants it: the combination is taken from other programs only while the setting is on, and
/// presses in haste are one. Main thread only.
class RecordHotKey final : public QObject {
    Q_OBJECT

public:
    using Make = std::function<std::unique_ptr<HotKey>()>;

    /// The model outlives this. `make` may find none.
    RecordHotKey(AppModel& model, Make make, std::function<void()> action);
    ~RecordHotKey() override;

    /// The way to a hot key on the platform that the application runs on. Where it asks the user, the setting is off
    /// as long as he has not decided.
    [[nodiscard]] static Make forPlatform(AppModel& model);

    /// As the keys do it, for whoever stands in for them.
    void press();

private:
    void follow();

    AppModel& m_model;
    Make m_make;
    std::function<void()> m_action;
    QElapsedTimer m_sincePress;
    std::unique_ptr<HotKey> m_key;
};

}  // namespace vantiro
