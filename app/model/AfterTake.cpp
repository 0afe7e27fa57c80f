// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/AfterTake.h"

#include "app/model/ProgressMail.h"
#include "core/analysis/KeptAnalysis.h"
#include "core/copies/CopyJournal.h"
#include "core/copies/MusicInbox.h"
#include "core/copies/TakeCopies.h"

#include <QDir>
#include <QTimeZone>

#include <utility>

namespace vantiro {

AfterTake::AfterTake(AppModel& model, const ModelServices& services) : m_model(model), m_services(services) { }

void AfterTake::resume()
{
    if (m_model.isSample()) {
        return;
    }
    // Apart from each other: a folder on a disk that hangs must not hold up the copies.
    m_services.scheduler.runElsewhere(Scheduler::Work::patient, CopyJournal::sweep);
    m_services.scheduler.background(
        Scheduler::Work::patient, CopyWork::takeUp, m_guard([this](const std::vector<CopyWork::Owed>& owed) {
            for (const auto& [wanted, recorded] : owed) {
                afterTake(wanted.take, recorded, wanted.format, wanted.toMusic);
            }
        }));
}

void AfterTake::afterTake(
    const QString& take, const QDateTime& recorded, std::optional<ExportFormat> copy, bool toMusic)
{
    if (isBusy(take)) {
        return;
    }
    const PendingCopy wanted{take, copy, toMusic};
    if (copy) {
        makePending(wanted, recorded);
    } else if (toMusic) {
        withInbox(take, [this, wanted, recorded](const std::optional<QString>& inbox) {
            if (inbox) {
                makePending(wanted, recorded);
            }
        });
    }
}

void AfterTake::makePending(const PendingCopy& wanted, const QDateTime& recorded)
{
    m_services.scheduler.background(
        Scheduler::Work::patient, [work = begin(wanted.take, recorded), wanted] { return work.makePending(wanted); },
        m_guard([this, take = wanted.take](const std::optional<QString>& words) {
            end(take);
            showSaved(words);
        }));
}

void AfterTake::withInbox(const QString& take, std::function<void(const std::optional<QString>&)> done)
{
    if (!m_inboxSought.insert(take).second) {
        return;
    }
    m_model.setSeeksInbox(true);
    m_services.scheduler.background(
        Scheduler::Work::lasting, [choice = m_model.musicInboxChoice()] { return MusicInbox::locateInbox(choice); },
        m_guard([this, take, done = std::move(done)](const std::optional<QString>& inbox) {
            m_inboxSought.erase(take);
            m_model.setSeeksInbox(!m_inboxSought.empty());
            if (!isBusy(take)) {
                done(inbox);
            }
        }));
}

void AfterTake::suggestDestination(
    const Take& take, ExportFormat format, std::function<void(const QString& destination)> done)
{
    const QString copies = TakeCopies::folder(m_model.takesFolder());
    // The disk may be one that does not answer.
    m_services.scheduler.background(
        Scheduler::Work::lasting, [copies] { return CopyWork::makeFolder(copies); },
        m_guard([this, destination = QDir(copies).filePath(TakeExporter::suggestedName(take.path, format)),
                    done = std::move(done)](const Result<void>& made) {
            if (!made) {
                m_model.trace().line([&] { return QStringLiteral("export: ") + errorText(made.error()); });
            }
            done(destination);
        }));
}

void AfterTake::exportTake(const Take& take, ExportFormat format, const QString& destination)
{
    if (isBusy(take.path)) {
        return;
    }
    m_services.scheduler.background(
        Scheduler::Work::patient,
        [work = begin(take.path, take.created), destination, format] { return work.exportTo(destination, format); },
        m_guard([this, path = take.path, destination](const CopyOutcome& outcome) {
            end(path);
            exported(destination, outcome);
        }));
}

void AfterTake::exported(const QString& destination, const CopyOutcome& outcome)
{
    if (outcome) {
        if (m_services.reveal) {
            m_services.reveal(destination);
        }
        return;
    }
    if (outcome.error().stage != CopyFailure::Stage::cancelled) {
        m_model.trace().line([&] { return QStringLiteral("export: ") + errorText(outcome.error().error); });
        m_model.setError(CopyWork::ownWords(outcome.error())
                .value_or(tr("The export did not finish. Check that there is space where you saved it, then try "
                             "again.")));
    }
}

void AfterTake::addTakeToMusic(const Take& take)
{
    if (isBusy(take.path)) {
        return;
    }
    withInbox(take.path, [this, take](const std::optional<QString>& inbox) {
        if (!inbox) {
            if (m_onInboxMissing) {
                m_onInboxMissing(take);
            }
            return;
        }
        m_services.scheduler.background(
            Scheduler::Work::patient,
            [work = begin(take.path, take.created), inbox = *inbox] { return work.addToMusic(inbox); },
            m_guard([this, path = take.path](const CopyOutcome& outcome) {
                end(path);
                showSaved(outcome ? std::nullopt : CopyWork::musicWords(outcome.error()));
            }));
    });
}

void AfterTake::chooseInbox(const QString& picked, const std::optional<Take>& waiting)
{
    if (m_model.isSample()) {
        return;
    }
    m_services.scheduler.background(
        Scheduler::Work::lasting, [picked] { return MusicInbox::inboxFor(picked); },
        m_guard([this, waiting](const Result<QString>& inbox) {
            if (!inbox) {
                m_model.setError(errorText(inbox.error()));
                return;
            }
            m_model.setMusicInboxChoice(*inbox);
            if (waiting) {
                addTakeToMusic(*waiting);
            }
        }));
}

void AfterTake::stopExport(const QString& take)
{
    if (const auto found = m_stops.find(take); found != m_stops.end()) {
        *found->second = true;
    }
}

bool AfterTake::isBusy(const QString& take) const
{
    return m_model.isSample() || m_model.exporting().contains(take);
}

CopyWork AfterTake::begin(const QString& take, const QDateTime& recorded)
{
    const Stop stop = std::make_shared<std::atomic<bool>>(false);
    m_stops.insert_or_assign(take, stop);
    m_model.setExporting(take, 0.0);
    const auto mail =
        std::make_shared<ProgressMail>(m_services.scheduler.mailbox(), m_guard([this, take, stop](double fraction) {
            const auto found = m_stops.find(take);
            if (found != m_stops.end() && found->second == stop) {
                m_model.setExporting(take, fraction);
            }
        }));
    return {.take = take,
        .copies = TakeCopies::folder(m_model.takesFolder()),
        .tags = TakeCopies::tags(recorded, m_model.djName(), QTimeZone::systemTimeZone()),
        .inboxChoice = m_model.musicInboxChoice(),
        .trace = m_model.trace(),
        .progress = [mail](double fraction) { mail->tell(fraction); },
        .cancelled = [stop] { return stop->load(); }};
}

void AfterTake::end(const QString& take)
{
    m_stops.erase(take);
    m_model.setExporting(take, std::nullopt);
}

void AfterTake::showSaved(const std::optional<QString>& words)
{
    if (words) {
        m_model.setError(tr("The take is saved, but %1").arg(*words));
    }
}

void AfterTake::requestOverview(const Take& take)
{
    const auto& recorder = m_model.recorder();
    if (m_model.isSample() || m_model.overviews().contains(take.path) || m_model.readingOverviews().contains(take.path)
        || (recorder && recorder->path == take.path)) {
        return;
    }
    m_model.addReadingOverview(take.path);
    m_wantedOverviews.push_back(take);
    readNextOverview();
}

void AfterTake::readNextOverview()
{
    // One after the other: a disk reads one file faster than many at once.
    if (m_readsOverview || m_wantedOverviews.empty()) {
        return;
    }
    m_readsOverview = true;
    const Take take = std::move(m_wantedOverviews.front());
    m_wantedOverviews.pop_front();
    m_services.scheduler.background(
        Scheduler::Work::patient,
        [take] { return KeptAnalysis::isKept(take) ? TakeOverview::load(take) : TakeOverview::compute(take.path); },
        m_guard([this, take](Result<TakeOverview> overview) {
            m_readsOverview = false;
            m_model.removeReadingOverview(take.path);
            if (overview) {
                m_model.setOverview(take.path, *std::move(overview));
            } else {
                m_model.trace().line([&] { return QStringLiteral("overview: cannot read ") + take.fileName(); });
            }
            readNextOverview();
        }));
}

}  // namespace vantiro
