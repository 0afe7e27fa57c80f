// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/Departure.h"
#include "app/model/Desk.h"
#include "app/model/ModelFlows.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/FakeScheduler.h"

#include <QObject>

#include <memory>

namespace vantiro::test {

/// A model that is a picture, for the screens to show, and the hand that brings it into a state.
class Stage : public QObject {
    Q_OBJECT
    Q_PROPERTY(vantiro::Desk* desk READ desk CONSTANT)

public:
    Stage()
        : m_model(std::make_unique<SettingsStore>(), {}, {}, AppModel::Kind::sample)
        , m_flows(m_model, services())
        , m_departure(m_model, services(), [] { })
        , m_desk(m_model, m_flows, m_departure, {})
    { }

    [[nodiscard]] Desk* desk() { return &m_desk; }
    Q_INVOKABLE void fail(const QString& message) { m_model.setError(message); }
    Q_INVOKABLE void hear(float levelDB)
    {
        m_model.setLevels({.left = levelDB, .right = levelDB, .holdLeft = levelDB, .holdRight = levelDB});
    }
    Q_INVOKABLE void record()
    {
        RecorderState take;
        take.path = QStringLiteral("/takes/mix.caf");
        m_model.setRecorder(take);
    }
    /// As before anything was done.
    Q_INVOKABLE void reset()
    {
        m_model.setRecorder({});
        m_model.setError({});
        m_model.setShowsTakes(false);
        m_model.setShowsSettings(false);
        m_model.setIsAdvanced(false);
        m_model.setConfirmStop(true);
    }

private:
    [[nodiscard]] ModelServices services()
    {
        return {.audio = m_audio,
            .permission = nullptr,
            .scheduler = m_scheduler,
            .recorder = {.running = [this] { return m_model.recorder(); },
                .last = [] { return std::optional<RecorderState>(); },
                .start = {},
                .stop = {}}};
    }

    FakeAudio m_audio;
    FakeScheduler m_scheduler;
    AppModel m_model;
    ModelFlows m_flows;
    Departure m_departure;
    Desk m_desk;
};

}  // namespace vantiro::test
