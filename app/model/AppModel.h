// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppSettings.h"
#include "app/model/DeckState.h"
#include "app/model/MeterLevels.h"
#include "core/analysis/TakeOverview.h"
#include "core/copies/TakeTags.h"
#include "core/foundation/Trace.h"
#include "core/recorder/RecorderState.h"
#include "core/sources/AudioDevice.h"
#include "core/sources/Preflight.h"
#include "core/sources/SourceMemory.h"
#include "core/sources/SourceRanker.h"
#include "core/takes/Take.h"

#include <QObject>
#include <QProperty>
#include <QString>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace vantiro {

/// Everything that a screen shows, as one observable object with a signal a field: a field that is given the value it
/// has tells nobody. It is state and nothing else; the flows beside it do the work. Main thread only.
///
/// There is no "recording" flag: `recorder` is present as long as a take runs.
class AppModel final : public vantiro::AppSettings {
    Q_OBJECT
    Q_PROPERTY(bool selectionIsManual READ selectionIsManual NOTIFY selectionIsManualChanged)
    Q_PROPERTY(bool detecting READ detecting NOTIFY detectingChanged)
    Q_PROPERTY(bool starting READ starting NOTIFY startingChanged)
    Q_PROPERTY(bool microphoneAllowed READ microphoneAllowed NOTIFY microphoneAllowedChanged)
    Q_PROPERTY(bool showsTakes READ showsTakes WRITE setShowsTakes NOTIFY showsTakesChanged)
    Q_PROPERTY(bool showsSettings READ showsSettings WRITE setShowsSettings NOTIFY showsSettingsChanged)
    Q_PROPERTY(QString menuBarElapsed READ menuBarElapsed NOTIFY menuBarElapsedChanged)
    Q_PROPERTY(bool takesRead READ takesRead NOTIFY takesReadChanged)
    Q_PROPERTY(bool playbackPaused READ playbackPaused NOTIFY playbackPausedChanged)
    Q_PROPERTY(bool opensAtLogin READ opensAtLogin NOTIFY opensAtLoginChanged)
    Q_PROPERTY(QString sourceName READ sourceName NOTIFY sourceNameChanged)

public:
    using Moment = std::chrono::steady_clock::time_point;

    /// Whether the instance belongs to a running application or is a picture, filled by hand.
    enum class Kind {
        live,
        sample,  ///< Saves nothing, opens no audio.
    };

    /// One line for the faceplate.
    struct Headline {
        QString text;
        PreflightFinding::Severity severity = PreflightFinding::Severity::ok;

        bool operator==(const Headline&) const = default;
    };

    /// What a capture for the meter told of its source.
    struct MeterFormat {
        double sampleRate = 0;  ///< Hz
        std::int64_t channels = 0;

        bool operator==(const MeterFormat&) const = default;
    };

    static constexpr std::size_t historyLength = 600;  ///< 20 seconds at 30 values a second.

    AppModel(std::unique_ptr<SettingsStore> store, SourceMemory memory, Trace trace, Kind kind = Kind::live);
    ~AppModel() override;

    [[nodiscard]] bool isSample() const { return m_kind == Kind::sample; }
    [[nodiscard]] const Trace& trace() const { return m_trace; }

    /// The ranked list of the source menu.
    [[nodiscard]] const std::vector<RankedSource>& sources() const { return m_sources.value(); }
    void setSources(std::vector<RankedSource> sources) { m_sources = std::move(sources); }
    /// The input devices as last read.
    [[nodiscard]] const std::vector<AudioDevice>& devices() const { return m_devices.value(); }
    void setDevices(std::vector<AudioDevice> devices) { m_devices = std::move(devices); }
    /// The chosen source.
    [[nodiscard]] const std::optional<SourceRef>& selected() const { return m_selected.value(); }
    void setSelected(const std::optional<SourceRef>& source) { m_selected = source; }
    /// The user chose it, so that automatic picking holds back.
    [[nodiscard]] bool selectionIsManual() const { return m_selectionIsManual; }
    void setSelectionIsManual(bool isManual) { m_selectionIsManual = isManual; }
    /// Sources are being listened to.
    [[nodiscard]] bool detecting() const { return m_detecting; }
    void setDetecting(bool detecting) { m_detecting = detecting; }
    /// The running take, as last looked at.
    [[nodiscard]] const std::optional<RecorderState>& recorder() const { return m_recorder.value(); }
    /// Tells of another take, of its end, and of frames that came; not of every figure.
    void setRecorder(const std::optional<RecorderState>& recorder);
    /// The figures of the running take, or of the last one that was seen running.
    [[nodiscard]] const std::optional<CaptureStats>& takeStats() const { return m_takeStats.value(); }
    void setTakeStats(const std::optional<CaptureStats>& stats) { m_takeStats = stats; }
    /// What is in the takes folder, newest first, without the running take.
    [[nodiscard]] const std::vector<Take>& takes() const { return m_takes.value(); }
    void setTakes(std::vector<Take> takes) { m_takes = std::move(takes); }
    /// The takes folder has been read, so that no takes means that there are none.
    [[nodiscard]] bool takesRead() const { return m_takesRead; }
    void setTakesRead(bool read) { m_takesRead = read; }
    [[nodiscard]] const MeterLevels& levels() const { return m_levels.value(); }
    void setLevels(const MeterLevels& levels) { m_levels = levels; }
    /// Peaks in dB, the newest last.
    [[nodiscard]] std::span<const float> history() const { return m_history; }
    void pushHistory(float peakDB);
    void clearHistory();
    [[nodiscard]] const std::vector<PreflightFinding>& findings() const { return m_findings.value(); }
    void setFindings(std::vector<PreflightFinding> findings);
    /// What the window shows as an alert. Only the user's dismissal clears it, no success does.
    [[nodiscard]] const std::optional<QString>& errorMessage() const { return m_errorMessage.value(); }
    void setError(const std::optional<QString>& text);
    [[nodiscard]] bool microphoneAllowed() const { return m_microphoneAllowed; }
    void setMicrophoneAllowed(bool allowed) { m_microphoneAllowed = allowed; }
    /// The question for audio inputs has been answered.
    [[nodiscard]] bool accessDecided() const { return m_accessDecided; }
    void setAccessDecided(bool decided) { m_accessDecided = decided; }
    /// The window shows the takes instead of the deck.
    [[nodiscard]] bool showsTakes() const { return m_showsTakes; }
    void setShowsTakes(bool shows) { m_showsTakes = shows; }
    [[nodiscard]] bool showsSettings() const { return m_showsSettings; }
    void setShowsSettings(bool shows) { m_showsSettings = shows; }
    /// The running take's time, for the menu bar; else empty.
    [[nodiscard]] const QString& menuBarElapsed() const { return m_menuBarElapsed.value(); }
    void setMenuBarElapsed(const QString& text) { m_menuBarElapsed = text; }
    /// A take is being started.
    [[nodiscard]] bool starting() const { return m_starting; }
    void setStarting(bool starting) { m_starting = starting; }
    /// When Record was pressed while no source was known.
    [[nodiscard]] const std::optional<Moment>& recordPressedAt() const { return m_recordPressedAt; }
    void setRecordPressedAt(std::optional<Moment> moment) { m_recordPressedAt = moment; }
    /// The selected source's name, kept for when it vanishes.
    [[nodiscard]] const QString& lastKnownName() const { return m_lastKnownName.value(); }
    void setLastKnownName(const QString& name) { m_lastKnownName = name; }
    /// What the meter's capture is like, while there is one.
    [[nodiscard]] const std::optional<MeterFormat>& meterFormat() const { return m_meterFormat.value(); }
    void setMeterFormat(const std::optional<MeterFormat>& format) { m_meterFormat = format; }
    /// The takes that are being copied, by path, with the progress of that from 0 to 1.
    [[nodiscard]] const std::map<QString, double>& exporting() const { return m_exporting; }
    /// Absent means that the work for this take is over.
    void setExporting(const QString& take, std::optional<double> progress);
    /// The music library is being looked for, so that more takes may be copied.
    [[nodiscard]] bool seeksInbox() const { return m_seeksInbox; }
    void setSeeksInbox(bool seeks) { m_seeksInbox = seeks; }
    /// The shapes of takes, by path, as far as they have been read.
    [[nodiscard]] const std::map<QString, TakeOverview>& overviews() const { return m_overviews; }
    void setOverview(const QString& take, TakeOverview overview);
    /// The takes whose shapes are being read.
    [[nodiscard]] const std::set<QString>& readingOverviews() const { return m_readingOverviews; }
    void addReadingOverview(const QString& take);
    void removeReadingOverview(const QString& take);
    /// The take on the deck, playing or paused.
    [[nodiscard]] const std::optional<Take>& playing() const { return m_playing.value(); }
    void setPlaying(const std::optional<Take>& take) { m_playing = take; }
    /// In the take on the deck, and its length, in seconds; without one they mean nothing.
    [[nodiscard]] double playbackPosition() const { return m_playbackPosition; }
    void setPlaybackPosition(double seconds) { m_playbackPosition = seconds; }
    [[nodiscard]] double playbackLength() const { return m_playbackLength; }
    void setPlaybackLength(double seconds) { m_playbackLength = seconds; }
    [[nodiscard]] bool playbackPaused() const { return m_playbackPaused; }
    void setPlaybackPaused(bool paused) { m_playbackPaused = paused; }
    /// The levels of what is played; they freeze while it is paused.
    [[nodiscard]] const MeterLevels& playbackLevels() const { return m_playbackLevels.value(); }
    void setPlaybackLevels(const MeterLevels& levels) { m_playbackLevels = levels; }
    /// Peaks in dB, the newest last.
    [[nodiscard]] std::span<const float> playbackHistory() const { return m_playbackHistory; }
    void pushPlaybackHistory(float peakDB);
    void clearPlaybackHistory();
    /// What the system's display of what is playing shows of the take on the deck.
    [[nodiscard]] const std::optional<TakeTags>& playingTags() const { return m_playingTags.value(); }
    void setPlayingTags(const std::optional<TakeTags>& tags) { m_playingTags = tags; }
    /// The position is another one than time alone would have made it.
    void tellPlaybackSought() { Q_EMIT playbackSought(); }
    /// The system starts the application when the user logs in.
    [[nodiscard]] bool opensAtLogin() const { return m_opensAtLogin; }
    void setOpensAtLogin(bool opens) { m_opensAtLogin = opens; }
    /// What was chosen and at which rate. Whoever changes it saves it.
    [[nodiscard]] SourceMemory& memory() { return m_memory; }

    /// What to call the selected source, also when it has vanished; "No source" without one.
    [[nodiscard]] const QString& sourceName() const { return m_sourceName.value(); }
    /// The first of those that were recorded last.
    [[nodiscard]] std::optional<Take> newestTake() const;
    /// The selected source's place in the list.
    [[nodiscard]] std::optional<RankedSource> selectedRanked() const;
    /// What the screens draw: the levels of the take on the deck, or else of the source.
    [[nodiscard]] const MeterLevels& shownLevels() const { return m_playing.value() ? playbackLevels() : levels(); }
    [[nodiscard]] std::span<const float> shownHistory() const
    {
        return m_playing.value() ? playbackHistory() : history();
    }
    [[nodiscard]] DeckState deckState() const { return m_deckState.value(); }
    [[nodiscard]] Headline headline() const { return m_headline.value(); }
    /// Channels of the selected source; 0 if unknown.
    [[nodiscard]] std::int64_t channelCount() const;
    /// The first channel of the pair that is recorded from the selected source, counted from 1.
    [[nodiscard]] std::int64_t firstChannelOfSelection() const;
    void setFirstChannelOfSelection(std::int64_t channel);
    /// The channels to record from the selected source; absent means that the capture decides.
    [[nodiscard]] std::optional<std::vector<std::int64_t>> channelsForSelection() const;

Q_SIGNALS:
    void sourcesChanged();
    void devicesChanged();
    void selectedChanged();
    void selectionIsManualChanged();
    void detectingChanged();
    void recorderChanged();
    void takeStatsChanged();
    void takesChanged();
    void takesReadChanged();
    void levelsChanged();
    void historyChanged();
    void findingsChanged();
    void errorMessageChanged();
    void microphoneAllowedChanged();
    void accessDecidedChanged();
    void showsTakesChanged();
    void showsSettingsChanged();
    void menuBarElapsedChanged();
    void startingChanged();
    void lastKnownNameChanged();
    void meterFormatChanged();
    void exportingChanged();
    void seeksInboxChanged();
    void overviewsChanged();
    void readingOverviewsChanged();
    void playingChanged();
    void playbackPositionChanged();
    void playbackLengthChanged();
    void playbackPausedChanged();
    void playbackLevelsChanged();
    void playbackHistoryChanged();
    void playbackSought();
    void playingTagsChanged();
    void shownLevelsChanged();
    void shownHistoryChanged();
    void opensAtLoginChanged();
    void sourceNameChanged();
    void deckStateChanged();
    void headlineChanged();

private:
    [[nodiscard]] QString nameOfSelection() const;
    [[nodiscard]] DeckState stateOfDeck() const;
    [[nodiscard]] Headline lineOfFindings() const;

    Kind m_kind;
    Trace m_trace;
    SourceMemory m_memory;
    std::optional<Moment> m_recordPressedAt;
    std::vector<float> m_history;
    std::vector<float> m_playbackHistory;
    std::map<QString, double> m_exporting;
    std::map<QString, TakeOverview> m_overviews;
    std::set<QString> m_readingOverviews;

    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::vector<RankedSource>, m_sources, &AppModel::sourcesChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::vector<AudioDevice>, m_devices, &AppModel::devicesChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::optional<SourceRef>, m_selected, &AppModel::selectedChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_selectionIsManual, &AppModel::selectionIsManualChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_detecting, &AppModel::detectingChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::optional<RecorderState>, m_recorder, &AppModel::recorderChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::optional<CaptureStats>, m_takeStats, &AppModel::takeStatsChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::vector<Take>, m_takes, &AppModel::takesChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_takesRead, &AppModel::takesReadChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, MeterLevels, m_levels, &AppModel::levelsChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::vector<PreflightFinding>, m_findings, &AppModel::findingsChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::optional<QString>, m_errorMessage, &AppModel::errorMessageChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppModel, bool, m_microphoneAllowed, true, &AppModel::microphoneAllowedChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_accessDecided, &AppModel::accessDecidedChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_showsTakes, &AppModel::showsTakesChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_showsSettings, &AppModel::showsSettingsChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, QString, m_menuBarElapsed, &AppModel::menuBarElapsedChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_starting, &AppModel::startingChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, QString, m_lastKnownName, &AppModel::lastKnownNameChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::optional<MeterFormat>, m_meterFormat, &AppModel::meterFormatChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_seeksInbox, &AppModel::seeksInboxChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::optional<Take>, m_playing, &AppModel::playingChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, double, m_playbackPosition, &AppModel::playbackPositionChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, double, m_playbackLength, &AppModel::playbackLengthChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_playbackPaused, &AppModel::playbackPausedChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, MeterLevels, m_playbackLevels, &AppModel::playbackLevelsChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, std::optional<TakeTags>, m_playingTags, &AppModel::playingTagsChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, bool, m_opensAtLogin, &AppModel::opensAtLoginChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, QString, m_sourceName, &AppModel::sourceNameChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, DeckState, m_deckState, &AppModel::deckStateChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppModel, Headline, m_headline, &AppModel::headlineChanged)
};

}  // namespace vantiro
