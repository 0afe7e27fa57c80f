// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/FindingsWatch.h"
#include "app/model/Guard.h"
#include "app/model/ModelServices.h"
#include "app/model/SourceWatch.h"

#include <QCoreApplication>

#include <functional>
#include <memory>
#include <optional>

namespace vantiro {

/// A take as the application sees it: the press and its gates, the start and the stop in the background, and twice a
/// second a look at what the recorder is doing. The recorder owns the take: one that was started by an earlier run, or
/// by another program, is found by that look and is like any other.
///
/// | state    | `recorder`                  | `starting` |
/// |----------|-----------------------------|------------|
/// | idle     | absent                      | no         |
/// | starting | absent                      | yes        |
/// | running  | present                     | no         |
/// | stopping | present until it has gone   | no         |
///
/// Main thread only.
class TakeFlow {
    Q_DECLARE_TR_FUNCTIONS(TakeFlow)

public:
    TakeFlow(AppModel& model, FindingsWatch& findings, SourceWatch& sources, const ModelServices& services);
    ~TakeFlow();

    TakeFlow(const TakeFlow&) = delete;
    TakeFlow& operator=(const TakeFlow&) = delete;

    /// Called once: looks at the recorder at once, and from then on twice a second.
    void start();

    /// Stops the running take, or starts one.
    void toggleTake();
    /// Starts a take of the selected source. Without one the press waits for the end of a detection; whatever else is
    /// in the way is shown.
    void startTake();
    /// Ends the running take in the background.
    void stopTake();
    /// Looks at the recorder; the only place where the end of a take is noticed.
    void pollRecorder();

    /// Called once for each take that was seen running and has ended, if its file is there. Nothing happens while it is
    /// unset.
    void setAfterTake(std::function<void(const RecorderState& take)> callback) { m_afterTake = std::move(callback); }

private:
    [[nodiscard]] bool mayStart();
    /// How a start went.
    struct Outcome {
        Result<RecorderState> state;
        std::optional<PreflightFinding> obstacle = std::nullopt;  ///< What the last look at the disk found.
    };

    [[nodiscard]] static Outcome runStart(
        const RecorderServices& recorder, const QString& folder, RecorderClient::Request request);
    void started(const SourceRef& source, const Outcome& outcome);
    void showObstacle(const PreflightFinding& obstacle);
    void takeEnded(const RecorderState& take);
    void showElapsed();

    AppModel& m_model;
    FindingsWatch& m_findings;
    SourceWatch& m_sources;
    ModelServices m_services;
    std::function<void(const RecorderState& take)> m_afterTake;
    std::unique_ptr<Scheduler::Timer> m_timer;
    Guard m_guard;
};

}  // namespace vantiro
