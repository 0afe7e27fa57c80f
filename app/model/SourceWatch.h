// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/FindingsWatch.h"
#include "app/model/Guard.h"
#include "app/model/ModelServices.h"
#include "core/sources/SourceProbe.h"

#include <QMap>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantiro {

/// Finds out by itself what carries the mix: listens to all inputs when access to audio is granted and whenever the
/// hardware changes, and picks one. While a take runs nothing is opened; the take's own source is selected.
///
/// | detecting | change pending | event               | what follows                                     |
/// |-----------|----------------|---------------------|--------------------------------------------------|
/// | no        | no             | detect()            | all inputs are listened to                       |
/// | yes       | no             | hardware changes    | a change is pending                              |
/// | yes       | yes            | listening is over   | one more round, however many changes there were  |
/// | yes       | any            | a take starts       | the list is taken over, the selection stays      |
///
/// Main thread only.
class SourceWatch {
public:
    /// Who wants to know.
    enum class Reason {
        asked,            ///< The user, or the start: a selection that is gone gives way.
        hardwareChanged,  ///< The user's device may be coming back, so its selection is kept.
    };

    SourceWatch(AppModel& model, FindingsWatch& findings, const ModelServices& services);
    ~SourceWatch();

    SourceWatch(const SourceWatch&) = delete;
    SourceWatch& operator=(const SourceWatch&) = delete;

    /// Called once: follows the hardware from here on.
    void start();
    /// Reads anew whether audio inputs may be opened.
    void refreshPermission();
    /// Asks for access and then detects; once a run, however often it is called.
    void ensureListening();
    void detect(Reason reason);
    /// The user's choice: it is remembered for the hardware that is connected.
    void choose(const SourceRef& source);
    /// Forgets what was chosen before, and detects anew.
    void forgetChoices();
    /// Keeps the rate in Hz of a source's take.
    void rememberRate(const SourceRef& source, double rate);
    /// Called when a press of Record that waited for a source can go on.
    void setOnWaitingPress(std::function<void()> callback) { m_onWaitingPress = std::move(callback); }

private:
    /// What of the hardware matters for the ranking.
    struct Hardware {
        std::vector<AudioDevice> devices;  ///< Inputs, without their rates.
        QMap<QString, bool> djPrograms;    ///< By identifier: whether it plays.

        /// Something came or went, or a program began to play. One that pauses stays what it was.
        [[nodiscard]] bool callsForRound(const Hardware& before) const;
    };

    [[nodiscard]] Hardware look();
    void hardwareChanged();
    void startRound(Reason reason);
    void finish(FoundSources found);
    void rankWithPresentMemory(FoundSources& found) const;
    void pick(const FoundSources& found);
    void goOnWithWaitingPress();
    void adoptSourceOfTake();
    void makeUpForTake();
    void select(const std::optional<SourceRef>& source, bool isManual);
    void saveMemory();

    AppModel& m_model;
    FindingsWatch& m_findings;
    ModelServices m_services;
    std::function<void()> m_onWaitingPress;
    bool m_listening = false;         ///< Access was asked for.
    Reason m_reason = Reason::asked;  ///< Of the round that is under way.
    bool m_changePending = false;     ///< The hardware changed while it was listened to.
    bool m_skippedForTake = false;    ///< A round of listening was left out since a take ran.
    Hardware m_hardware;
    std::unique_ptr<HardwareWatch> m_watch;
    Guard m_guard;
};

}  // namespace vantiro
