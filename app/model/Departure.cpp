// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/Departure.h"

#include <utility>

namespace vantiro {

Departure::Departure(AppModel& model, const ModelServices& services, std::function<void()> pollRecorder)
    : m_model(model)
    , m_services(services)
    , m_pollRecorder(std::move(pollRecorder))
{
    // What follows a take is begun by whoever else hears of its end, so it is looked at after that.
    const auto later = [this] { m_services.scheduler.post(m_guard([this] { worldChanged(); })); };
    connect(&model, &AppModel::recorderChanged, this, later);
    connect(&model, &AppModel::startingChanged, this, later);
    connect(&model, &AppModel::exportingChanged, this, later);
    connect(&model, &AppModel::seeksInboxChanged, this, later);
}

Departure::~Departure() = default;

bool Departure::takeRuns() const
{
    return m_model.recorder() || m_model.starting();
}

/// No take runs, or none began, and an alert tells why: leaving would take that from the user's eyes.
bool Departure::endedWithWords() const
{
    return !takeRuns() && m_model.errorMessage();
}

void Departure::close(Tray tray)
{
    if (tray == Tray::absent) {
        quit();
        return;
    }
    // Nothing is asked behind a window that is gone.
    if (m_question != Question::Saving) {
        ask(Question::None);
    }
    Q_EMIT hide();
}

void Departure::quit()
{
    if (m_gone) {
        return;
    }
    stay();
    if (m_question != Question::None) {
        Q_EMIT show();
    } else if (takeRuns()) {
        ask(Question::Take);
        Q_EMIT show();
    } else if (!m_model.exporting().empty()) {
        ask(Question::Copies);
        Q_EMIT show();
    } else if (copiesAreMade()) {
        finishHidden();
    } else {
        go();
    }
}

void Departure::stay()
{
    if (std::exchange(m_leavesWithLastCopy, false)) {
        m_patience.reset();
    }
}

void Departure::terminate()
{
    go();
}

void Departure::stopAndSave()
{
    if (m_question != Question::Take) {
        return;
    }
    ask(Question::Saving);
    m_stopping = false;
    m_patience = m_services.scheduler.every(patience, m_guard([this] { go(); }));
    stopTake();
}

/// A take that is being started can be stopped only when it runs.
void Departure::stopTake()
{
    if (m_stopping || m_model.starting()) {
        return;
    }
    m_stopping = true;
    m_services.scheduler.background(
        Scheduler::Work::lasting, [stop = m_services.recorder.stop] { return stop(patience); },
        m_guard([this, number = ++m_stopNumber](const Result<std::optional<RecorderState>>& stopped) {
            m_pollRecorder();
            if (number == m_stopNumber && m_question == Question::Saving && !m_gone) {
                saved(stopped.has_value());
            }
        }));
}

void Departure::saved(bool whole)
{
    if (whole && copiesAreMade()) {
        finishHidden();
    } else {
        go();
    }
}

bool Departure::copiesAreMade() const
{
    return !m_model.exporting().empty() || m_model.seeksInbox();
}

void Departure::finishHidden()
{
    ask(Question::None);
    m_leavesWithLastCopy = true;
    m_patience = m_services.scheduler.every(patience, m_guard([this] {
        if (m_model.exporting().empty()) {
            go();
        }
    }));
    Q_EMIT silence();
    Q_EMIT hide();
}

void Departure::worldChanged()
{
    if (m_gone) {
        return;
    }
    if (m_question == Question::Saving && !m_stopping && endedWithWords()) {
        cancel();
    } else if (m_question == Question::Saving) {
        stopTake();
    } else if (m_question == Question::Take && endedWithWords()) {
        cancel();
    } else if (m_question == Question::Take && !takeRuns()) {
        ask(Question::None);
        quit();
    } else if (m_leavesWithLastCopy && takeRuns()) {
        // Whoever starts a take wants the program to stay, and it may have no other way back than its window.
        stay();
        Q_EMIT show();
    } else if ((m_leavesWithLastCopy || m_question == Question::Copies) && !copiesAreMade()) {
        go();
    }
}

void Departure::keepRecording()
{
    if (m_question == Question::Take) {
        go();
    }
}

void Departure::cancel()
{
    stay();
    ask(Question::None);
}

void Departure::quitWhenDone()
{
    if (m_question == Question::Copies) {
        finishHidden();
    }
}

void Departure::quitNow()
{
    go();
}

void Departure::ask(Question question)
{
    if (question != Question::Saving) {
        m_patience.reset();
    }
    if (std::exchange(m_question, question) != question) {
        Q_EMIT questionChanged();
    }
}

void Departure::go()
{
    m_patience.reset();
    if (!std::exchange(m_gone, true)) {
        Q_EMIT silence();
        Q_EMIT leave();
    }
}

}  // namespace vantiro
