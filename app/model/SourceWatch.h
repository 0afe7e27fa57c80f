// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/FindingsWatch.h"
#include "app/model/Guard.h"
#include "app/model/ModelServices.h"
#include "core/sources/SourceProbe.h"

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
    /// How much of the hardware changed; more includes less.
    enum class Change {
        none,
        programs,  ///< Devices need not be heard again.
        devices,
    };

    /// What of the hardware matters for the ranking.
    struct Hardware {
        std::vector<AudioDevice> devices;  ///< Without their rates.
        std::vector<AudioProcess> djPrograms;

        bool operator==(const Hardware&) const = default;
    };

    [[nodiscard]] Hardware hardware() const;
    void hardwareChanged();
    void probe(Reason reason, Change change);
    void finish(Reason reason, FoundSources found);
    void pick(Reason reason, const FoundSources& found);
    void goOnWithWaitingPress();
    void adoptSourceOfTake();
    void takeEnded();
    void select(const std::optional<SourceRef>& source, bool isManual);
    void saveMemory();

    AppModel& m_model;
    FindingsWatch& m_findings;
    ModelServices m_services;
    std::function<void()> m_onWaitingPress;
    bool m_listening = false;  ///< Access was asked for.
    Change m_pendingChange = Change::none;
    bool m_skippedForTake = false;  ///< A round of listening was left out since a take ran.
    Hardware m_hardware;
    std::vector<SourceObservation> m_heard;  ///< Of the last round.
    std::unique_ptr<HardwareWatch> m_watch;
    Guard m_guard;
};

}  // namespace vantiro
