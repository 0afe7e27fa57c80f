// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/ModelFlows.h"

namespace vantiro {

ModelFlows::ModelFlows(AppModel& model, const ModelServices& services)
    : m_model(model)
    , m_scheduler(services.scheduler)
    , m_findings(model, services)
    , m_meter(model, m_findings, services)
    , m_sources(model, m_findings, services)
    , m_takes(model, m_findings, m_sources, services)
    , m_takesList(model, services)
    , m_afterTake(model, services)
    , m_playback(model, services)
{
    m_takes.setAfterTake([this](const RecorderState& take) {
        m_takesList.takeEnded(take.path);
        m_afterTake.afterTake(take.path, take.startedAt, m_model.takeCopy(), m_model.addToMusic());
    });
}

void ModelFlows::start()
{
    m_takes.start();
    m_takesList.start();
    m_sources.start();
    m_afterTake.resume();
    if (m_model.didSetup()) {
        m_sources.ensureListening();
    }
}

void ModelFlows::becomeActive()
{
    m_sources.refreshPermission();
    m_takes.pollRecorder();
}

}  // namespace vantiro
