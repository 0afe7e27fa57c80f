// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/Guard.h"
#include "app/model/ModelServices.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace vantiro {

/// How the application ends. A take outlives it if the user wants so, and copies that are being made are finished first
/// unless the user has no patience.
///
/// | question | event                            | what follows                                   |
/// |----------|----------------------------------|------------------------------------------------|
/// | none     | quit, a take runs                | take                                           |
/// | none     | quit, copies are made            | copies                                         |
/// | none     | quit                             | leave                                          |
/// | take     | stopAndSave                      | saving                                         |
/// | take     | keepRecording                    | leave; the take goes on                        |
/// | take     | the take ends by itself          | as quit                                        |
/// | take     | the same, and an alert tells why | none                                           |
/// | saving   | the take is whole                | hide until the last copy is done, then leave   |
/// | saving   | the take did not start           | none; an alert tells why                       |
/// | saving   | 15 seconds, or a failure         | leave; the recorder finishes by itself         |
/// | copies   | quitWhenDone                     | hide; leave with the last copy                 |
/// | copies   | the last copy is done            | leave                                          |
/// | hidden   | a take runs                      | none; show                                     |
/// | any      | quitNow                          | leave                                          |
/// | any      | cancel                           | none                                           |
/// | any      | terminate                        | leave                                          |
///
/// Copies count from the end of their take on, also while the music library is still being looked for; that is given up
/// after 15 seconds, and nobody is asked about it.
///
/// Main thread only.
class Departure final : public QObject {
    Q_OBJECT
    Q_PROPERTY(Question question READ question NOTIFY questionChanged)

public:
    /// What is asked, or told, before the end.
    enum Question {
        None,
        Take,
        Saving,
        Copies
    };
    Q_ENUM(Question)

    /// Whether an item in the tray stands in for a window that is gone.
    enum class Tray {
        absent,
        lives
    };

    static constexpr std::chrono::seconds patience{15};  ///< How long a take may take to be saved.

    /// `pollRecorder` looks at the recorder at once, so that a take that was just stopped gets its copy.
    Departure(AppModel& model, const ModelServices& services, std::function<void()> pollRecorder);
    ~Departure() override;

    [[nodiscard]] Question question() const { return m_question; }

    /// The window's close key: hides the window while a tray item lives, and is quit() otherwise.
    void close(Tray tray);
    Q_INVOKABLE void quit();
    /// The window is up again, so nothing ends behind its back any more.
    void stay();
    /// The session ends, or the process was asked to go: nothing is asked, and a running take is left to the recorder.
    void terminate();

    Q_INVOKABLE void stopAndSave();
    Q_INVOKABLE void keepRecording();
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void quitWhenDone();
    Q_INVOKABLE void quitNow();

Q_SIGNALS:
    void questionChanged();
    /// Whoever left wants to hear nothing more, however long the program stays to finish its work.
    void silence();
    /// The windows go, the program stays.
    void hide();
    /// The windows are wanted: there is something to ask, or to see.
    void show();
    /// The program ends. Comes once.
    void leave();

private:
    [[nodiscard]] bool takeRuns() const;
    [[nodiscard]] bool endedWithWords() const;
    void worldChanged();
    void stopTake();
    void saved(bool whole);
    [[nodiscard]] bool copiesAreMade() const;
    void finishHidden();
    void ask(Question question);
    void go();

    AppModel& m_model;
    ModelServices m_services;
    std::function<void()> m_pollRecorder;
    Question m_question = Question::None;
    bool m_leavesWithLastCopy = false;  ///< Hidden, with nothing to ask any more.
    bool m_stopping = false;            ///< The take that is to be saved has been told to end.
    int m_stopNumber = 0;               ///< Of the latest stop: what an earlier one tells is dropped.
    bool m_gone = false;
    std::unique_ptr<Scheduler::Timer> m_patience;
    Guard m_guard;
};

}  // namespace vantiro
