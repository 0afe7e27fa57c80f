// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/AppModel.h"

#include "core/foundation/Secrets.h"
#include "core/sources/ChannelPair.h"

#include <algorithm>

namespace vantiro {

namespace {

    [[nodiscard]] bool isAll(const std::vector<float>& history, float peakDB)
    {
        return std::ranges::all_of(history, [peakDB](float value) { return value == peakDB; });
    }

    /// Whether that changed anything.
    [[nodiscard]] bool push(std::vector<float>& history, float peakDB)
    {
        if (isAll(history, peakDB)) {
            return false;
        }
        std::ranges::copy(std::span(history).subspan(1), history.begin());
        history.back() = peakDB;
        return true;
    }

    [[nodiscard]] bool clear(std::vector<float>& history)
    {
        const bool isClear = isAll(history, meterFloorDB);
        std::ranges::fill(history, meterFloorDB);
        return !isClear;
    }

}  // namespace

AppModel::AppModel(std::unique_ptr<SettingsStore> store, SourceMemory memory, Trace trace, Kind kind)
    // Whatever store a sample is given, it saves nothing.
    : AppSettings(kind == Kind::sample ? std::make_unique<SettingsStore>() : std::move(store))
    , m_kind(kind)
    , m_trace(std::move(trace))
    , m_memory(std::move(memory))
    , m_history(historyLength, meterFloorDB)
    , m_playbackHistory(historyLength, meterFloorDB)
{
    m_lastKnownName = tr("No source");
    // A name is a stranger's, and it stands on one line.
    m_sourceName.setBinding([this] { return nameOfSelection().simplified(); });
    m_deckState.setBinding([this] { return stateOfDeck(); });
    m_headline.setBinding([this] { return lineOfFindings(); });
    const auto shows = [this](auto signal, auto shown, bool whilePlaying) {
        connect(this, signal, this, [this, shown, whilePlaying] {
            if (playing().has_value() == whilePlaying) {
                Q_EMIT(this->*shown)();
            }
        });
    };
    shows(&AppModel::levelsChanged, &AppModel::shownLevelsChanged, false);
    shows(&AppModel::playbackLevelsChanged, &AppModel::shownLevelsChanged, true);
    shows(&AppModel::historyChanged, &AppModel::shownHistoryChanged, false);
    shows(&AppModel::playbackHistoryChanged, &AppModel::shownHistoryChanged, true);
    connect(this, &AppModel::playingChanged, this, &AppModel::shownLevelsChanged);
    connect(this, &AppModel::playingChanged, this, &AppModel::shownHistoryChanged);
}

AppModel::~AppModel() = default;

void AppModel::setRecorder(const std::optional<RecorderState>& recorder)
{
    const std::optional<RecorderState>& old = m_recorder.value();
    const auto frames = [](const RecorderState& state) { return state.stats ? state.stats->frames : 0; };
    const bool isSame = old.has_value() == recorder.has_value()
        && (!old || (old->pid == recorder->pid && old->path == recorder->path && frames(*old) == frames(*recorder)));
    if (isSame) {
        return;
    }
    if (recorder) {
        setTakeStats(recorder->stats);
    }
    m_recorder = recorder;
}

void AppModel::pushHistory(float peakDB)
{
    if (push(m_history, peakDB)) {
        Q_EMIT historyChanged();
    }
}

void AppModel::clearHistory()
{
    if (clear(m_history)) {
        Q_EMIT historyChanged();
    }
}

void AppModel::pushPlaybackHistory(float peakDB)
{
    if (push(m_playbackHistory, peakDB)) {
        Q_EMIT playbackHistoryChanged();
    }
}

void AppModel::clearPlaybackHistory()
{
    if (clear(m_playbackHistory)) {
        Q_EMIT playbackHistoryChanged();
    }
}

void AppModel::setFindings(std::vector<PreflightFinding> findings)
{
    if (findings == m_findings.value()) {
        return;
    }
    m_trace.line([&] {
        QStringList titles;
        for (const PreflightFinding& finding : findings) {
            titles << finding.title;
        }
        return QStringLiteral("source: %1 (%2) | %3")
            .arg(sourceName(), m_selectionIsManual ? QStringLiteral("manual") : QStringLiteral("automatic"),
                titles.join(QStringLiteral(", ")));
    });
    m_findings = std::move(findings);
}

void AppModel::setError(const std::optional<QString>& text)
{
    const auto shown = text ? std::optional(Secrets::redacted(*text)) : std::nullopt;
    if (shown && !shown->isEmpty()) {
        m_trace.line([&] { return QStringLiteral("message: ") + *shown; });
    }
    m_errorMessage = shown;
}

void AppModel::setExporting(const QString& take, std::optional<double> progress)
{
    const auto found = m_exporting.find(take);
    const auto before = found == m_exporting.end() ? std::nullopt : std::optional(found->second);
    if (progress == before) {
        return;
    }
    if (progress) {
        m_exporting.insert_or_assign(take, *progress);
    } else {
        m_exporting.erase(found);
    }
    Q_EMIT exportingChanged();
}

void AppModel::setOverview(const QString& take, TakeOverview overview)
{
    const auto found = m_overviews.find(take);
    if (found == m_overviews.end() || found->second != overview) {
        m_overviews.insert_or_assign(take, std::move(overview));
        Q_EMIT overviewsChanged();
    }
}

void AppModel::addReadingOverview(const QString& take)
{
    if (m_readingOverviews.insert(take).second) {
        Q_EMIT readingOverviewsChanged();
    }
}

void AppModel::removeReadingOverview(const QString& take)
{
    if (m_readingOverviews.erase(take) > 0) {
        Q_EMIT readingOverviewsChanged();
    }
}

std::optional<Take> AppModel::newestTake() const
{
    const auto& takes = m_takes.value();
    const auto newest = std::ranges::max_element(takes, {}, &Take::created);
    return newest == takes.end() ? std::nullopt : std::optional(*newest);
}

std::optional<RankedSource> AppModel::selectedRanked() const
{
    const auto& sources = m_sources.value();
    const auto& selected = m_selected.value();
    const auto found = selected
        ? std::ranges::find(sources, *selected, [](const RankedSource& source) { return source.observation.ref; })
        : sources.end();
    return found == sources.end() ? std::nullopt : std::optional(*found);
}

QString AppModel::nameOfSelection() const
{
    // All are read at once, so that a change of any makes the name anew.
    const auto& selected = m_selected.value();
    const auto& recorder = m_recorder.value();
    const auto& devices = m_devices.value();
    QString lastKnown = m_lastKnownName.value();
    if (const auto ranked = selectedRanked()) {
        return ranked->observation.name;
    }
    if (recorder) {
        return recorder->deviceName;
    }
    if (!selected) {
        return tr("No source");
    }
    if (selected->kind == SourceRef::Kind::device) {
        const auto device = std::ranges::find(devices, selected->id, &AudioDevice::uid);
        if (device != devices.end()) {
            return device->name;
        }
    }
    return lastKnown;
}

DeckState AppModel::stateOfDeck() const
{
    const bool plays = m_playing.value().has_value();
    const double position = m_playbackPosition;
    const double length = m_playbackLength;
    const bool paused = m_playbackPaused;
    const auto& recorder = m_recorder.value();
    const bool starting = m_starting.value();
    const bool detecting = m_detecting.value();
    const bool hasSource = m_selected.value().has_value();
    if (plays) {
        return {.kind = DeckState::Kind::playing, .position = position, .length = length, .paused = paused};
    }
    if (recorder) {
        return {.kind = DeckState::Kind::recording, .since = recorder->startedAt};
    }
    if (starting) {
        return {.kind = DeckState::Kind::starting};
    }
    if (detecting) {
        return {.kind = DeckState::Kind::listening};
    }
    return {.kind = hasSource ? DeckState::Kind::ready : DeckState::Kind::noSource};
}

AppModel::Headline AppModel::lineOfFindings() const
{
    using Severity = PreflightFinding::Severity;
    // Both are read at once, so that a change of either makes the line anew.
    const auto& findings = m_findings.value();
    const bool detecting = m_detecting.value();
    if (findings.empty()) {
        return {.text = detecting ? tr("Listening for your mix…") : tr("Nothing found yet")};
    }
    // max_element() gives the first of equals.
    const auto worst = std::ranges::max_element(findings, {}, &PreflightFinding::severity);
    if (worst->severity > Severity::ok) {
        return {.text = worst->title, .severity = worst->severity};
    }
    const auto level = std::ranges::find(findings, PreflightFinding::Check::level, &PreflightFinding::check);
    return {.text = tr("Ready. %1").arg(level == findings.end() ? QString() : level->title)};
}

std::int64_t AppModel::channelCount() const
{
    const auto& selected = m_selected.value();
    if (!selected) {
        return 0;
    }
    if (selected->kind == SourceRef::Kind::app) {
        return m_meterFormat.value() ? m_meterFormat.value()->channels : 0;
    }
    const auto& devices = m_devices.value();
    const auto device = std::ranges::find(devices, selected->id, &AudioDevice::uid);
    return device == devices.end() ? 0 : device->inputChannels;
}

std::int64_t AppModel::firstChannelOfSelection() const
{
    return m_selected.value() ? firstChannel().value(m_selected.value()->id, 1) : 1;
}

void AppModel::setFirstChannelOfSelection(std::int64_t channel)
{
    if (m_selected.value()) {
        Channels channels = firstChannel();
        channels.insert(m_selected.value()->id, channel);
        setFirstChannel(channels);
    }
}

std::optional<std::vector<std::int64_t>> AppModel::channelsForSelection() const
{
    const auto& selected = m_selected.value();
    return selected ? channelPair(*selected, firstChannelOfSelection(), channelCount()) : std::nullopt;
}

}  // namespace vantiro
