// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/FindingsWatch.h"
#include "app/model/Guard.h"
#include "app/model/MeterBallistics.h"
#include "app/model/ModelServices.h"
#include "core/capture/SourceCapture.h"

#include <QCoreApplication>

#include <atomic>
#include <memory>
#include <optional>

namespace vantiro {

/// Listens to the selected source for as long as somebody looks at the meter, and every 3 seconds lets the findings
/// know the loudest level. It records nothing and follows its source: through a replug, a new rate, an input that fell
/// silent and a restart of the audio service. Main thread only.
class LiveMeter {
    Q_DECLARE_TR_FUNCTIONS(LiveMeter)

public:
    LiveMeter(AppModel& model, FindingsWatch& findings, const ModelServices& services);
    ~LiveMeter();

    LiveMeter(const LiveMeter&) = delete;
    LiveMeter& operator=(const LiveMeter&) = delete;

    /// A view that shows the meter appears, or goes. The first starts it, the last stops it.
    void addUser();
    void removeUser();

private:
    using Opened = Result<std::shared_ptr<SourceCapture>>;
    using Moment = Scheduler::Moment;

    /// What to do when the source cannot be listened to.
    enum class OnFailure {
        tell,   ///< The user just chose it.
        retry,  ///< It will be back.
    };

    void restart(OnFailure onFailure);
    void opened(int request, OnFailure onFailure, Opened result);
    void stop();
    void tick();
    void followSource(Moment now);
    [[nodiscard]] std::pair<float, float> takePeaks();

    AppModel& m_model;
    FindingsWatch& m_findings;
    ModelServices m_services;
    int m_users = 0;
    std::shared_ptr<SourceCapture> m_capture;
    std::unique_ptr<Scheduler::Timer> m_timer;
    MeterBallistics m_ballistics;
    float m_windowPeak = meterFloorDB;  ///< The loudest level since m_windowStart.
    Moment m_windowStart;
    /// Of the capture that is wanted: one that was asked for before is dropped, or not even opened.
    std::shared_ptr<std::atomic<int>> m_request = std::make_shared<std::atomic<int>>(0);
    bool m_opening = false;  ///< The latest request has not been answered.
    Moment m_nextTry;        ///< Not before this the source is looked for again.
    std::int64_t m_frames = 0;
    Moment m_lastFrames;  ///< When the capture's frames last grew.
    bool m_showsDemo;
    Guard m_guard;
};

}  // namespace vantiro
