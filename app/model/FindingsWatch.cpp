// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/FindingsWatch.h"

namespace vantiro {

FindingsWatch::FindingsWatch(AppModel& model, const ModelServices& services) : m_model(model), m_services(services)
{
    QObject::connect(&model, &AppModel::takesFolderChanged, &model, m_guard([this] { forgetVolume(); }));
}

void FindingsWatch::refresh(std::optional<float> peakDB)
{
    if (m_model.isSample()) {
        return;
    }
    const auto ranked = m_model.selectedRanked();
    m_peakDB = peakDB || !ranked ? peakDB : ranked->observation.peakDB;
    m_model.setFindings(findings());
    lookAtVolume();
}

void FindingsWatch::recheck()
{
    if (!m_model.isSample()) {
        m_model.setFindings(findings());
    }
}

std::vector<PreflightFinding> FindingsWatch::findings() const
{
    const std::optional<SourceRef>& selected = m_model.selected();
    const bool isApp = selected && selected->kind == SourceRef::Kind::app;
    // What a program plays can be recorded without any permission.
    if (!m_model.microphoneAllowed() && !isApp) {
        return {Preflight::microphoneDenied()};
    }
    if (!selected) {
        return Preflight::noSource(SourceRanker::deviceNames(m_model.sources()));
    }
    const auto& format = m_model.meterFormat();
    return Preflight::run(PreflightFacts::input(m_services.audio, m_model.memory(), *selected,
        {.sourceName = m_model.sourceName(),
            .peakDB = m_peakDB,
            .tapRate = format ? std::optional(format->sampleRate) : std::nullopt},
        m_volume));
}

void FindingsWatch::lookAtVolume()
{
    if (m_looking) {
        return;
    }
    m_looking = true;
    // A network disk may hang for minutes, and nothing waits for it.
    m_services.scheduler.background(
        Scheduler::Work::lasting,
        [folder = m_model.takesFolder()] { return std::pair(folder, PreflightFacts::volume(folder)); },
        m_guard([this](const std::pair<QString, VolumeFacts>& found) {
            m_looking = false;
            if (found.first != m_model.takesFolder()) {
                lookAtVolume();
            } else if (found.second != m_volume) {
                m_volume = found.second;
                m_model.setFindings(findings());
            }
        }));
}

void FindingsWatch::forgetVolume()
{
    m_volume = {};
    // A disk that hangs must not keep the new one from being looked at.
    m_looking = false;
    refresh(m_peakDB);
}

}  // namespace vantiro
