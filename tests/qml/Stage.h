// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/Departure.h"
#include "app/model/Desk.h"
#include "app/model/ModelFlows.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/FakeScheduler.h"
#include "tests/support/Sandbox.h"
#include "tests/takes/PcmBytes.h"

#include <QObject>
#include <QTemporaryDir>

#include <memory>

namespace vantiro::test {

/// A model that is a picture, for the screens to show, and the hand that brings it into a state.
class Stage : public QObject {
    Q_OBJECT
    Q_PROPERTY(vantiro::Desk* desk READ desk CONSTANT)

public:
    explicit Stage(AppModel::Kind kind = AppModel::Kind::sample)
        : m_model(std::make_unique<SettingsStore>(), {}, {}, kind)
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
    /// A take of 100 seconds is on the deck of a model that is no picture.
    Q_INVOKABLE void play()
    {
        const PcmLayout layout{
            .sample = PcmLayout::Sample::int16, .order = std::endian::little, .sampleRate = 1000, .channels = 1};
        const QString path = m_folder.filePath(QStringLiteral("take.caf"));
        Sandbox::writeFile(path, cafFile(layout, QByteArray(200'000, 1)));
        m_flows.playback().play({.path = path, .created = QDateTime::currentDateTimeUtc()});
        m_scheduler.settle();
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

    QTemporaryDir m_folder;
    FakeAudio m_audio;
    FakeScheduler m_scheduler;
    AppModel m_model;
    ModelFlows m_flows;
    Departure m_departure;
    Desk m_desk;
};

}  // namespace vantiro::test
