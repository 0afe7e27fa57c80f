// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/Desk.h"

#include "app/model/Figures.h"

#include <QVariantMap>

#include <utility>

namespace vantiro {

namespace {

    Desk::Phase phaseOf(DeckState::Kind kind)
    {
        switch (kind) {
        case DeckState::Kind::noSource:
            return Desk::Phase::NoSource;
        case DeckState::Kind::ready:
            return Desk::Phase::Ready;
        case DeckState::Kind::listening:
            return Desk::Phase::Listening;
        case DeckState::Kind::starting:
            return Desk::Phase::Starting;
        case DeckState::Kind::recording:
            return Desk::Phase::Recording;
        case DeckState::Kind::playing:
            return Desk::Phase::Playing;
        }
        std::unreachable();
    }

}  // namespace

Desk::Desk(AppModel& model, ModelFlows& flows, Departure& departure, Doors doors)
    : m_model(model)
    , m_flows(flows)
    , m_departure(departure)
    , m_doors(std::move(doors))
    , m_phase(phaseOf(model.deckState().kind))
    , m_takeRan(takeRuns())
{
    m_deckTwin = twinText();
    positionMoved();
    followModel();
    connect(&departure, &Departure::silence, this, &Desk::stopPlayback);
    countTakes();
}

Desk::~Desk() = default;

void Desk::followModel()
{
    const auto follow = [this](auto signal, auto... slots) { (connect(&m_model, signal, this, slots), ...); };
    follow(&AppModel::deckStateChanged, &Desk::stateChanged, &Desk::twinChanged);
    follow(&AppModel::shownLevelsChanged, &Desk::twinChanged);
    follow(&AppModel::menuBarElapsedChanged, &Desk::twinChanged);
    follow(&AppModel::recorderChanged, &Desk::stateChanged);
    follow(&AppModel::startingChanged, &Desk::sourceChanged, &Desk::channelsChanged, &Desk::playLastChanged);
    follow(&AppModel::detectingChanged, &Desk::sourceChanged);
    follow(&AppModel::selectionIsManualChanged, &Desk::sourceChanged);
    follow(&AppModel::selectedChanged, &Desk::sourceChanged, &Desk::sourceEntriesChanged, &Desk::channelsChanged);
    follow(&AppModel::sourcesChanged, &Desk::sourceEntriesChanged);
    follow(&AppModel::isAdvancedChanged, &Desk::sourceEntriesChanged);
    follow(&AppModel::devicesChanged, &Desk::channelsChanged);
    follow(&AppModel::meterFormatChanged, &Desk::channelsChanged);
    follow(&AppModel::firstChannelChanged, &Desk::channelsChanged);
    follow(&AppModel::findingsChanged, &Desk::findingsChanged);
    follow(&AppModel::headlineChanged, &Desk::findingsChanged);
    follow(&AppModel::takeStatsChanged, &Desk::figuresChanged);
    follow(&AppModel::errorMessageChanged, &Desk::errorMessageChanged);
    follow(&AppModel::takesChanged, &Desk::countTakes, &Desk::playLastChanged);
    follow(&AppModel::takesReadChanged, &Desk::countTakes);
    follow(&AppModel::playingChanged, &Desk::countTakes);
    follow(&AppModel::playbackPausedChanged, &Desk::pauseTextChanged);
    follow(&AppModel::playbackPositionChanged, &Desk::positionMoved);
    follow(&AppModel::playbackLengthChanged, &Desk::lengthChanged, &Desk::positionMoved);
}

/// A running take tells of itself twice a second, and only its beginning and its end matter here.
void Desk::stateChanged()
{
    const Phase phase = phaseOf(m_model.deckState().kind);
    const bool phaseIsSame = std::exchange(m_phase, phase) == phase;
    const bool takeIsSame = std::exchange(m_takeRan, takeRuns()) == takeRuns();
    if (phaseIsSame && takeIsSame) {
        return;
    }
    if (!takeRuns()) {
        ask(false);
    }
    Q_EMIT phaseChanged();
    Q_EMIT sourceChanged();
    Q_EMIT channelsChanged();
    Q_EMIT playLastChanged();
}

/// While a take runs its number stays, whatever happens in the folder.
void Desk::countTakes()
{
    const bool isFirstCount = m_model.takesRead() && !m_counted;
    if (isFirstCount || !(takeRuns() || m_model.starting())) {
        m_counted = m_model.takesRead();
        m_nextNumber = static_cast<int>(m_model.takes().size()) + 1;
    }
    const int number = m_model.playing() ? numberOfPlayed() : m_nextNumber;
    if (std::exchange(m_takeNumber, number) != number) {
        Q_EMIT takeNumberChanged();
    }
}

QString Desk::deckName() const
{
    switch (m_phase) {
    case Phase::NoSource:
        return tr("Open setup");
    case Phase::Recording:
        return tr("Stop recording");
    case Phase::Playing:
        return tr("Pause or resume playback");
    default:
        return tr("Record");
    }
}

QString Desk::deckHint() const
{
    return m_phase == Phase::Playing ? tr("Pause or resume (Space)") : keyHint();
}

QString Desk::keyText() const
{
    return m_phase == Phase::Playing ? tr("Stop playback") : deckName();
}

QString Desk::keyHint() const
{
    switch (m_phase) {
    case Phase::NoSource:
        return tr("Set up your source");
    case Phase::Recording:
        return tr("Stop and save the take (⌃⌥⌘R)");
    case Phase::Playing:
        return {};
    default:
        return tr("Record (⌃⌥⌘R)");
    }
}

bool Desk::keyEnabled() const
{
    return m_phase != Phase::Starting;
}

QString Desk::recordCommand() const
{
    return takeRuns() ? tr("Stop Recording") : tr("Record");
}

QString Desk::errorMessage() const
{
    return m_model.errorMessage().value_or(QString());
}

QVariantList Desk::findings() const
{
    QVariantList rows;
    for (const PreflightFinding& finding : m_model.findings()) {
        rows << QVariantMap{{QStringLiteral("severity"), static_cast<int>(finding.severity)},
            {QStringLiteral("title"), Figures::withMinus(finding.title)},
            {QStringLiteral("advice"), Figures::withMinus(finding.advice)}};
    }
    return rows;
}

QString Desk::noFindings() const
{
    return m_model.findings().empty() ? m_model.headline().text : QString();
}

QStringList Desk::figures() const
{
    return m_model.takeStats() ? Figures::ofTake(*m_model.takeStats()) : QStringList();
}

void Desk::pressDeck()
{
    if (m_phase == Phase::Playing) {
        togglePause();
    } else if (m_phase == Phase::NoSource) {
        openGuide();
    } else if (takeRuns() && m_model.confirmStop()) {
        ask(true);
    } else {
        toggleTake();
    }
}

void Desk::pressKey()
{
    if (m_phase == Phase::Playing) {
        stopPlayback();
    } else {
        pressDeck();
    }
}

void Desk::pressPanelKey()
{
    if (m_phase == Phase::Playing) {
        stopPlayback();
    } else if (m_phase == Phase::NoSource) {
        openGuide();
    } else {
        toggleTake();
    }
}

void Desk::toggleTake()
{
    ask(false);
    m_flows.takes().toggleTake();
}

void Desk::stopAssented()
{
    // The take may have ended while the question was up, and assent starts none.
    const bool stops = m_asksToStop && takeRuns();
    ask(false);
    if (stops) {
        m_flows.takes().stopTake();
    }
}

void Desk::stopDeclined()
{
    ask(false);
}

void Desk::ask(bool asks)
{
    if (std::exchange(m_asksToStop, asks) != asks) {
        Q_EMIT asksToStopChanged();
    }
}

void Desk::dismissError()
{
    m_model.setError(std::nullopt);
}

void Desk::openGuide()
{
    if (m_doors.guide) {
        m_doors.guide();
    } else {
        detectAgain();
    }
}

void Desk::openWindow() const
{
    if (m_doors.window) {
        m_doors.window();
    }
}

void Desk::setOpensAtLogin(bool on) const
{
    if (m_doors.openAtLogin) {
        m_doors.openAtLogin(on);
    }
}

void Desk::showTakes()
{
    m_model.setShowsTakes(true);
    openWindow();
}

void Desk::showTakesFolder()
{
    m_flows.takesList().showFolder(m_doors.folder);
}

void Desk::addMeterUser()
{
    m_departure.stay();
    m_flows.meter().addUser();
    ++m_meterUsers;
    if (m_meterUsers == 1) {
        Q_EMIT meteredChanged();
    }
    if (m_model.didSetup() || !m_doors.guide) {
        m_flows.sources().ensureListening();
    }
}

void Desk::removeMeterUser()
{
    m_flows.meter().removeUser();
    if (m_meterUsers == 0) {
        return;
    }
    --m_meterUsers;
    if (m_meterUsers == 0) {
        Q_EMIT meteredChanged();
    }
}

}  // namespace vantiro
