// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/TakeFlow.h"

#include "app/model/ClockWords.h"
#include "core/foundation/Files.h"
#include "core/recorder/EndingWords.h"
#include "core/recorder/VantiroPaths.h"
#include "core/sources/PreflightFacts.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>

#include <unistd.h>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    constexpr auto pollEvery = 500ms;
    constexpr auto stopLimit = 15s;

    /// Makes the folder, and finds out whether a take can be written there.
    Result<void> prepareFolder(const QString& folder)
    {
        if (auto made = files::makeFolder(folder); !made) {
            return made;
        }
        if (::access(QFile::encodeName(folder).constData(), W_OK | X_OK) != 0) {
            return std::unexpected(errnoError(folder, errno));
        }
        return {};
    }

}  // namespace

TakeFlow::TakeFlow(AppModel& model, FindingsWatch& findings, SourceWatch& sources, const ModelServices& services)
    : m_model(model)
    , m_findings(findings)
    , m_sources(sources)
    , m_services(services)
{
    m_sources.setOnWaitingPress([this] { startTake(); });
}

TakeFlow::~TakeFlow()
{
    m_sources.setOnWaitingPress(nullptr);
}

void TakeFlow::start()
{
    if (m_model.isSample()) {
        return;
    }
    pollRecorder();
    m_timer = m_services.scheduler.every(pollEvery, [this] { pollRecorder(); });
}

void TakeFlow::toggleTake()
{
    if (m_model.recorder()) {
        stopTake();
    } else {
        startTake();
    }
}

void TakeFlow::startTake()
{
    if (m_model.isSample() || m_model.recorder() || m_model.starting()) {
        return;
    }
    m_model.setShowsTakes(false);
    if (!mayStart()) {
        return;
    }
    m_model.setStarting(true);
    const RecorderClient::Request request{
        .source = *m_model.selected(), .channels = m_model.channelsForSelection(), .format = m_model.format()};
    m_services.scheduler.background(
        Scheduler::Work::lasting,
        [recorder = m_services.recorder, folder = m_model.takesFolder(), request] {
            return runStart(recorder, folder, request);
        },
        m_guard([this, source = request.source](const Outcome& outcome) { started(source, outcome); }));
}

TakeFlow::Outcome TakeFlow::runStart(
    const RecorderServices& recorder, const QString& folder, RecorderClient::Request request)
{
    // A folder made in the place of a disk that is not there would hide the take once the disk is back.
    if (const auto volume = PreflightFacts::volume(folder).missingVolume) {
        const PreflightFinding obstacle = Preflight::missingVolume(*volume);
        return {.state = captureFailure(obstacle.title), .obstacle = obstacle};
    }
    if (auto prepared = prepareFolder(folder); !prepared) {
        return {.state = std::unexpected(prepared.error())};
    }
    request.output = QDir(folder).filePath(VantiroPaths::newTakeName(request.format));
    Result<RecorderState> state = recorder.start(request);
    // Whatever failed there says nothing about the folder.
    return {.state = state ? std::move(state) : captureFailure(errorText(state.error()))};
}

/// What stands in the way of a take is shown, or waited for.
bool TakeFlow::mayStart()
{
    const std::optional<SourceRef>& selected = m_model.selected();
    if (!selected) {
        if (!m_model.detecting() && m_model.accessDecided()) {
            m_model.setError(tr("There is nothing to record from yet. Choose a source, or press SETUP at the top "
                                "of the window."));
        } else {
            m_model.setRecordPressedAt(m_services.scheduler.now());
            m_sources.ensureListening();
        }
        return false;
    }
    if (!PreflightFacts::isConnected(m_services.audio, *selected)) {
        m_model.setError(tr("%1 is not connected. Check the cable, or pick another source.").arg(m_model.sourceName()));
        return false;
    }
    m_sources.refreshPermission();
    m_findings.recheck();
    // The disk may be back by now: it is looked at anew when the take starts.
    const auto& findings = m_model.findings();
    const auto obstacle = std::ranges::find_if(findings, [](const PreflightFinding& finding) {
        return finding.check != PreflightFinding::Check::folder && !Preflight::canRecord({&finding, 1});
    });
    if (obstacle != findings.end()) {
        showObstacle(*obstacle);
        return false;
    }
    return true;
}

void TakeFlow::showObstacle(const PreflightFinding& obstacle)
{
    m_model.setError(tr("%1. %2").arg(obstacle.title, obstacle.advice));
}

void TakeFlow::started(const SourceRef& source, const Outcome& outcome)
{
    const Result<RecorderState>& state = outcome.state;
    m_model.setStarting(false);
    if (state) {
        m_model.trace().line([&] { return QStringLiteral("take: started, ") + state->path; });
        m_model.setRecorder(*state);
        // The rate that the take really has, which is the device's own unless another program holds it to another.
        if (source.kind == SourceRef::Kind::device && state->stats && state->stats->sampleRate > 0) {
            m_sources.rememberRate(source, state->stats->sampleRate);
        }
        return;
    }
    m_model.trace().line([&] { return QStringLiteral("take: did not start, ") + errorText(state.error()); });
    if (outcome.obstacle) {
        showObstacle(*outcome.obstacle);
        return;
    }
    if (std::holds_alternative<SystemError>(state.error())) {
        m_model.setError(tr("Vantiro cannot write to %1. Connect the drive, or choose another takes folder in "
                            "Settings.")
                .arg(m_model.takesFolder()));
        return;
    }
    m_model.setError(tr("The take did not start. Check that %1 is connected and playing, then press Record "
                        "again. Details are in recorder.log in Vantiro's support folder.")
            .arg(m_model.sourceName()));
}

void TakeFlow::stopTake()
{
    if (m_model.isSample()) {
        return;
    }
    m_services.scheduler.background(
        Scheduler::Work::lasting, [stop = m_services.recorder.stop] { return stop(stopLimit); },
        m_guard([this](const Result<std::optional<RecorderState>>& stopped) {
            if (!stopped) {
                m_model.trace().line([&] { return QStringLiteral("take: stop, ") + errorText(stopped.error()); });
                m_model.setError(tr("The take is still being saved. Wait a few seconds: it appears in your takes "
                                    "when it is done."));
            }
            pollRecorder();
        }));
}

void TakeFlow::pollRecorder()
{
    if (m_model.isSample()) {
        return;
    }
    const std::optional<RecorderState> before = m_model.recorder();
    m_model.setRecorder(m_services.recorder.running());
    showElapsed();
    if (before && !m_model.recorder()) {
        takeEnded(*before);
    }
}

void TakeFlow::takeEnded(const RecorderState& take)
{
    const std::optional<RecorderState> last = m_services.recorder.last();
    if (last && last->path == take.path && last->stats) {
        m_model.setTakeStats(last->stats);
    }
    if (const auto sentence = EndingWords::sentence(take.path, last)) {
        m_model.setError(sentence);
    }
    if (m_afterTake && QFileInfo::exists(take.path)) {
        m_afterTake(take);
    }
}

void TakeFlow::showElapsed()
{
    const auto& recorder = m_model.recorder();
    if (!recorder) {
        m_model.setMenuBarElapsed({});
        return;
    }
    const qint64 seconds = recorder->startedAt.secsTo(m_services.scheduler.wallClock());
    m_model.setMenuBarElapsed(ClockWords::time(static_cast<double>(seconds), ClockWords::Form::full));
}

}  // namespace vantiro
