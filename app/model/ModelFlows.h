// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AfterTake.h"
#include "app/model/DeckPlayback.h"
#include "app/model/FindingsWatch.h"
#include "app/model/LiveMeter.h"
#include "app/model/SourceWatch.h"
#include "app/model/TakeFlow.h"
#include "app/model/TakesList.h"

namespace vantiro {

/// All that drives the model, joined. The model and the services outlive it. Main thread only.
class ModelFlows {
public:
    ModelFlows(AppModel& model, const ModelServices& services);

    ModelFlows(const ModelFlows&) = delete;
    ModelFlows& operator=(const ModelFlows&) = delete;

    /// Called once, right after construction: finds a take that runs already, lists the others, follows the hardware,
    /// and listens for the mix if the setup guide has been passed. Copies that an earlier run did not finish are taken
    /// up again.
    void start();
    /// The application came to the front: what may have changed behind its back is read anew.
    void becomeActive();

    [[nodiscard]] LiveMeter& meter() { return m_meter; }
    [[nodiscard]] SourceWatch& sources() { return m_sources; }
    [[nodiscard]] TakeFlow& takes() { return m_takes; }
    [[nodiscard]] TakesList& takesList() { return m_takesList; }
    [[nodiscard]] AfterTake& afterTake() { return m_afterTake; }
    [[nodiscard]] DeckPlayback& playback() { return m_playback; }
    [[nodiscard]] Scheduler& scheduler() const { return m_scheduler; }

private:
    AppModel& m_model;
    Scheduler& m_scheduler;
    FindingsWatch m_findings;
    LiveMeter m_meter;
    SourceWatch m_sources;
    TakeFlow m_takes;
    TakesList m_takesList;
    AfterTake m_afterTake;
    DeckPlayback m_playback;
};

}  // namespace vantiro
