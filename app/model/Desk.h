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
    Q_PROPERTY(QString playLastText READ playLastText NOTIFY playLastChanged)
    Q_PROPERTY(QString playLastHint READ playLastHint NOTIFY playLastChanged)
    Q_PROPERTY(bool playLastEnabled READ playLastEnabled NOTIFY playLastChanged)

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
    };

    Desk(AppModel& model, ModelFlows& flows, Departure& departure, Doors doors);
    ~Desk() override;

    [[nodiscard]] AppModel* model() const { return &m_model; }
    [[nodiscard]] Departure* departure() const { return &m_departure; }
    [[nodiscard]] Phase phase() const { return m_phase; }
    /// The number that the running or the next take will have, counted from the oldest.
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
    /// The key below: "Play the Last Take", or why it cannot. An empty hint has no tooltip.
    [[nodiscard]] QString playLastText() const;
    [[nodiscard]] QString playLastHint() const;
    [[nodiscard]] bool playLastEnabled() const;

    /// The deck's centre: opens the guide without a source, asks before it stops a take if that is wanted, and else
    /// starts or stops a take.
    Q_INVOKABLE void pressDeck();
    /// The big key: as the deck.
    Q_INVOKABLE void pressKey();
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
    void playLastChanged();

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

    [[nodiscard]] std::vector<Entry> entries() const;
    [[nodiscard]] bool takeRuns() const { return m_model.recorder().has_value(); }
    [[nodiscard]] std::int64_t firstChannel() const;
    void followModel();
    void stateChanged();
    void countTakes();
    void twinChanged();
    void renewTwin();
    [[nodiscard]] QString twinText() const;
    void ask(bool asks);

    AppModel& m_model;
    ModelFlows& m_flows;
    Departure& m_departure;
    Doors m_doors;
    Phase m_phase = Phase::NoSource;
    bool m_takeRan = false;  ///< When it was last told.
    bool m_asksToStop = false;
    int m_takeNumber = 1;
    QString m_deckTwin;
    bool m_twinIsOld = false;
    std::unique_ptr<Scheduler::Timer> m_twinTimer;  ///< Runs until a second went by without news.
    bool m_counted = false;                         ///< The takes folder was read, so that the number is known.
};

}  // namespace vantiro
