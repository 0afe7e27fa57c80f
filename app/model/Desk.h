// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/Departure.h"
#include "app/model/ModelFlows.h"

#include <QCoreApplication>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace vantiro {

/// The model in the words of the screens: what each control says, whether it can be pressed, and what a press does. The
/// screens arrange and bind, and decide nothing. What is asked of the world around the windows (another window, another
/// program) goes to `Doors`. Main thread only.
class Desk final : public QObject {
    Q_OBJECT
    Q_PROPERTY(vantiro::AppModel* model READ model CONSTANT)
    Q_PROPERTY(vantiro::Departure* departure READ departure CONSTANT)
    Q_PROPERTY(Phase phase READ phase NOTIFY phaseChanged)
    Q_PROPERTY(int takeNumber READ takeNumber NOTIFY takeNumberChanged)
    Q_PROPERTY(QString deckName READ deckName NOTIFY phaseChanged)
    Q_PROPERTY(QString deckHint READ deckHint NOTIFY phaseChanged)
    Q_PROPERTY(QString deckTwin READ deckTwin NOTIFY deckTwinChanged)
    Q_PROPERTY(QString keyText READ keyText NOTIFY phaseChanged)
    Q_PROPERTY(QString keyHint READ keyHint NOTIFY phaseChanged)
    Q_PROPERTY(bool keyEnabled READ keyEnabled NOTIFY phaseChanged)
    Q_PROPERTY(QString recordCommand READ recordCommand NOTIFY phaseChanged)
    Q_PROPERTY(bool asksToStop READ asksToStop NOTIFY asksToStopChanged)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(QString sourceLine READ sourceLine NOTIFY sourceChanged)
    Q_PROPERTY(QString sourceHint READ sourceHint NOTIFY sourceChanged)
    Q_PROPERTY(bool sourceFixed READ sourceFixed NOTIFY sourceChanged)
    Q_PROPERTY(QVariantList sourceEntries READ sourceEntries NOTIFY sourceEntriesChanged)
    Q_PROPERTY(QString detectText READ detectText NOTIFY sourceChanged)
    Q_PROPERTY(bool hasChannels READ hasChannels NOTIFY channelsChanged)
    Q_PROPERTY(QString channels READ channels NOTIFY channelsChanged)
    Q_PROPERTY(bool canLowerChannels READ canLowerChannels NOTIFY channelsChanged)
    Q_PROPERTY(bool canRaiseChannels READ canRaiseChannels NOTIFY channelsChanged)
    Q_PROPERTY(QVariantList findings READ findings NOTIFY findingsChanged)
    Q_PROPERTY(QString noFindings READ noFindings NOTIFY findingsChanged)
    Q_PROPERTY(QStringList figures READ figures NOTIFY figuresChanged)
    Q_PROPERTY(bool metered READ metered NOTIFY meteredChanged)
    Q_PROPERTY(QString playLastText READ playLastText NOTIFY playLastChanged)
    Q_PROPERTY(QString playLastHint READ playLastHint NOTIFY playLastChanged)
    Q_PROPERTY(bool playLastEnabled READ playLastEnabled NOTIFY playLastChanged)
    Q_PROPERTY(QString pauseText READ pauseText NOTIFY pauseTextChanged)
    Q_PROPERTY(QString positionText READ positionText NOTIFY positionChanged)
    Q_PROPERTY(QString lengthText READ lengthText NOTIFY lengthChanged)
    Q_PROPERTY(double playbackFraction READ playbackFraction NOTIFY positionChanged)
    Q_PROPERTY(double playbackStep READ playbackStep NOTIFY lengthChanged)

public:
    /// DeckState::Kind, for the screens.
    enum Phase {
        NoSource,
        Ready,
        Listening,
        Starting,
        Recording,
        Playing
    };
    Q_ENUM(Phase)

    /// What of a press happens outside the model. An empty door is not there yet: what would go through it does what
    /// stands beside it.
    struct Doors {
        std::function<void()> guide = {};   ///< Shows the setup guide. Without it: sources are listened to anew.
        std::function<void()> window = {};  ///< Brings the main window to the front.
        std::function<void(const QString& folder)> folder = {};  ///< Shows a folder in the file manager.
        std::function<void(bool on)> openAtLogin = {};           ///< Asks the system to start the application, or not.
    };

    Desk(AppModel& model, ModelFlows& flows, Departure& departure, Doors doors);
    ~Desk() override;

    [[nodiscard]] AppModel* model() const { return &m_model; }
    [[nodiscard]] Departure* departure() const { return &m_departure; }
    [[nodiscard]] Phase phase() const { return m_phase; }
    /// The number of the take that plays, counted from the oldest, or else that which the running or the next take will
    /// have.
    [[nodiscard]] int takeNumber() const { return m_takeNumber; }
    /// The deck's centre, for a screen reader, and its tooltip.
    [[nodiscard]] QString deckName() const;
    [[nodiscard]] QString deckHint() const;
    /// What the deck shows, for those who hear it: the state, the time, the level. Renewed once a second at the most.
    [[nodiscard]] const QString& deckTwin() const { return m_deckTwin; }
    /// The big key. An empty hint has no tooltip.
    [[nodiscard]] QString keyText() const;
    [[nodiscard]] QString keyHint() const;
    [[nodiscard]] bool keyEnabled() const;
    /// The menu's entry: "Record", or "Stop Recording" while a take runs.
    [[nodiscard]] QString recordCommand() const;
    /// The question whether to stop the take is up.
    [[nodiscard]] bool asksToStop() const { return m_asksToStop; }
    /// Empty without one.
    [[nodiscard]] QString errorMessage() const;
    /// Under the source's name: that it is listened to, recorded from, or was picked automatically; else empty.
    [[nodiscard]] QString sourceLine() const;
    [[nodiscard]] QString sourceHint() const;
    /// A take runs or is being started, so that the source cannot be changed.
    [[nodiscard]] bool sourceFixed() const;
    /// The source menu, in rank order, as a menu takes it: `text`, `lens` true, `lit` for the selected one. With
    /// nothing connected one disabled line that says so. The last one opens the setup guide; before it, in the advanced
    /// form, stands the one that detects again. `id` names what an entry does, wherever it stands.
    [[nodiscard]] QVariantList sourceEntries() const;
    /// "Detect Again", or "Listening" meanwhile.
    [[nodiscard]] QString detectText() const;
    /// The source has more than a pair of channels.
    [[nodiscard]] bool hasChannels() const;
    /// The pair that is recorded, such as 9–10.
    [[nodiscard]] QString channels() const;
    [[nodiscard]] bool canLowerChannels() const;
    [[nodiscard]] bool canRaiseChannels() const;
    /// `severity` (0 ok, 1 warning, 2 blocker), `title`, `advice`.
    [[nodiscard]] QVariantList findings() const;
    /// What stands in the place of findings while there are none.
    [[nodiscard]] QString noFindings() const;
    /// The figures of the running take or of the last one that was seen: audio, lost on the way in, failed disk writes,
    /// clock drift, highest peak. Empty before the first.
    [[nodiscard]] QStringList figures() const;
    /// A screen with the meter is up, so that its levels are those of now.
    [[nodiscard]] bool metered() const { return m_meterUsers > 0; }
    /// The key below: "Play the Last Take", or why it cannot. An empty hint has no tooltip.
    [[nodiscard]] QString playLastText() const;
    [[nodiscard]] QString playLastHint() const;
    [[nodiscard]] bool playLastEnabled() const;

    /// The playback bar's key: "Pause" or "Play".
    [[nodiscard]] QString pauseText() const;
    /// Where the take on the deck plays, and its length, such as 4:07; from an hour on 1:04:07.
    [[nodiscard]] const QString& positionText() const { return m_positionText; }
    [[nodiscard]] QString lengthText() const;
    /// The position as a fraction of the length, 0 for no length. It is told of when a screen would show the
    /// difference.
    [[nodiscard]] double playbackFraction() const;
    /// A step of 5 seconds as a fraction of the length.
    [[nodiscard]] double playbackStep() const;

    /// The deck's centre: pauses a take that plays or lets it go on, opens the guide without a source, asks before it
    /// stops a take if that is wanted, and else starts or stops a take.
    Q_INVOKABLE void pressDeck();
    /// The big key: stops what plays, and else does as the deck.
    Q_INVOKABLE void pressKey();
    /// The tray panel's key: as the big key, but without a question.
    Q_INVOKABLE void pressPanelKey();
    /// The menu's entry and Ctrl+R: starts or stops a take without a question.
    Q_INVOKABLE void toggleTake();
    Q_INVOKABLE void stopAssented();
    Q_INVOKABLE void stopDeclined();
    Q_INVOKABLE void dismissError();
    Q_INVOKABLE void openGuide();
    Q_INVOKABLE void detectAgain();
    /// The entry of sourceEntries() with that `id` was chosen; one that is gone does nothing.
    Q_INVOKABLE void chooseSourceEntry(const QString& id);
    /// To the next pair upwards (1) or downwards (-1).
    Q_INVOKABLE void stepChannels(int direction);
    Q_INVOKABLE void playLastTake();
    Q_INVOKABLE void togglePause();
    Q_INVOKABLE void stopPlayback();
    Q_INVOKABLE void seekPlayback(double fraction);
    /// Forwards, or backwards if negative.
    Q_INVOKABLE void stepPlayback(double seconds);
    /// A key of the keyboard (Qt::Key, Qt::KeyboardModifiers) that nothing else wanted: Space pauses what plays, the
    /// arrows go 5 seconds back and forth, with Shift 60. Whether it meant something.
    Q_INVOKABLE bool pressPlaybackKey(int key, int modifiers, bool repeats);
    /// The outputs, as a menu takes them: the system's default, then each device that is there, and the chosen one even
    /// if it is not.
    Q_INVOKABLE QVariantList outputEntries() const;
    /// The entry of outputEntries() with that `id` was chosen; one that is gone does nothing.
    Q_INVOKABLE void chooseOutput(const QString& id);
    /// Brings the main window to the front.
    Q_INVOKABLE void openWindow() const;
    Q_INVOKABLE void setOpensAtLogin(bool on) const;
    /// Brings the takes page to the front.
    Q_INVOKABLE void showTakes();
    /// Makes the folder of takes, and shows its newest take, or the folder itself, in the file manager.
    Q_INVOKABLE void showTakesFolder();
    /// A screen with the meter appears, or goes.
    Q_INVOKABLE void addMeterUser();
    Q_INVOKABLE void removeMeterUser();

Q_SIGNALS:
    void phaseChanged();
    void takeNumberChanged();
    void deckTwinChanged();
    void asksToStopChanged();
    void errorMessageChanged();
    void sourceChanged();
    void sourceEntriesChanged();
    void channelsChanged();
    void findingsChanged();
    void figuresChanged();
    void meteredChanged();
    void playLastChanged();
    void pauseTextChanged();
    void positionChanged();
    void lengthChanged();

private:
    /// One line of the source menu.
    struct Entry {
        enum class Kind {
            nothing,
            source,
            detect,
            guide
        };

        Kind kind = Kind::nothing;
        SourceRef source = {};

        [[nodiscard]] QString id() const;
    };

    /// One line of the output menu.
    struct Output {
        QString uid;  ///< Empty for the default.
        QString name;
        QString text;

        [[nodiscard]] QString id() const { return QStringLiteral("output:") + uid; }
    };

    [[nodiscard]] std::vector<Entry> entries() const;
    [[nodiscard]] std::vector<Output> outputs() const;
    [[nodiscard]] bool takeRuns() const { return m_model.recorder().has_value(); }
    [[nodiscard]] std::int64_t firstChannel() const;
    void followModel();
    void stateChanged();
    void countTakes();
    void twinChanged();
    void renewTwin();
    [[nodiscard]] QString twinText() const;
    void positionMoved();
    [[nodiscard]] int numberOfPlayed() const;
    void ask(bool asks);

    AppModel& m_model;
    ModelFlows& m_flows;
    Departure& m_departure;
    Doors m_doors;
    Phase m_phase = Phase::NoSource;
    bool m_takeRan = false;  ///< When it was last told.
    bool m_asksToStop = false;
    int m_takeNumber = 1;
    int m_nextNumber = 1;
    int m_meterUsers = 0;
    QString m_positionText;
    double m_playbackFraction = 0;  ///< When it was last told.
    QString m_deckTwin;
    bool m_twinIsOld = false;
    std::unique_ptr<Scheduler::Timer> m_twinTimer;  ///< Runs until a second went by without news.
    bool m_counted = false;                         ///< The takes folder was read, so that the number is known.
};

}  // namespace vantiro
