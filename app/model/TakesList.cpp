// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/TakesList.h"

#include "core/foundation/Files.h"
#include "core/sources/PreflightFacts.h"
#include "core/takes/Takes.h"

#include <utility>

namespace vantiro {

TakesList::TakesList(AppModel& model, const ModelServices& services) : m_model(model), m_services(services) { }

void TakesList::start()
{
    if (m_model.isSample()) {
        return;
    }
    const auto changed = m_guard([this] { refreshIfOther(); });
    QObject::connect(&m_model, &AppModel::recorderChanged, &m_model, changed);
    QObject::connect(&m_model, &AppModel::startingChanged, &m_model, changed);
    QObject::connect(&m_model, &AppModel::takesFolderChanged, &m_model, changed);
    refresh();
}

TakesList::Request TakesList::present() const
{
    const auto& recorder = m_model.recorder();
    return {.folder = m_model.takesFolder(), .running = recorder ? std::optional(recorder->path) : std::nullopt};
}

void TakesList::refreshIfOther()
{
    if (m_last != present() || (m_again && !m_reading && !m_model.starting())) {
        refresh();
    }
}

void TakesList::refresh()
{
    if (m_model.isSample()) {
        return;
    }
    // A folder on a disk that hangs must not hold up another one.
    if (m_reading && m_reading->folder == m_model.takesFolder()) {
        m_again = true;
        m_last = present();
        return;
    }
    read();
}

void TakesList::read()
{
    const Request request = present();
    m_reading = request;
    m_last = request;
    m_again = false;
    m_services.scheduler.background(
        Scheduler::Work::lasting, [request] { return Takes::list(request.folder, request.running); },
        m_guard([this, number = ++m_number, request](
                    std::vector<Take> takes) { finish(number, request, std::move(takes)); }));
}

void TakesList::finish(int number, const Request& request, std::vector<Take> takes)
{
    if (number != m_number) {
        return;
    }
    m_reading.reset();
    if (m_model.starting()) {
        m_again = true;
        return;
    }
    if (request != present()) {
        read();
        return;
    }
    m_model.setTakes(std::move(takes));
    m_model.setTakesRead(true);
    if (m_again) {
        read();
    }
}

void TakesList::takeEnded(const QString& take)
{
    if (m_model.revealAfterTake() && m_services.reveal) {
        m_services.reveal(take);
    }
}

void TakesList::showFolder(std::function<void(const QString& folder)> open)
{
    if (m_model.isSample()) {
        return;
    }
    const QString folder = m_model.takesFolder();
    const auto make = [folder] {
        // A folder made in the place of a disk that is not there would hide its takes once it is back.
        if (!PreflightFacts::volume(folder).missingVolume) {
            return files::makeFolder(folder).has_value();
        }
        return false;
    };
    m_services.scheduler.background(
        Scheduler::Work::lasting, make, m_guard([this, folder, open = std::move(open)](bool) {
            const std::optional<Take> newest = m_model.newestTake();
            if (newest && m_services.reveal) {
                m_services.reveal(newest->path);
            } else if (open) {
                open(folder);
            }
        }));
}

}  // namespace vantiro
