// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/AppModel.h"
#include "app/model/CopyWork.h"
#include "app/model/Guard.h"
#include "app/model/ModelServices.h"
#include "core/takes/Take.h"

#include <QCoreApplication>

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>

namespace vantiro {

/// What may follow a take, in the background: a copy, the hand-over to the music library, its shape for the takes page,
/// and the user's own exports. The take itself is never touched. `AppModel::exporting` has an entry for each take that
/// is being worked on, which keeps it from being worked on twice.
///
/// | work                | noted as pending | after the end of the program |
/// |---------------------|------------------|------------------------------|
/// | afterTake()         | yes              | the next start does it       |
/// | exportTake()        | no               | nothing is left of it        |
/// | addTakeToMusic()    | no               | nothing is left of it        |
/// | requestOverview()   | no               | asked for again              |
///
/// All of it stands back behind a take that is being recorded. Overviews are read one after the other, so a disk that
/// hangs holds up those of all takes.
/// Nobody waits for any of it. Main thread only.
class AfterTake {
    Q_DECLARE_TR_FUNCTIONS(AfterTake)

public:
    AfterTake(AppModel& model, const ModelServices& services);

    AfterTake(const AfterTake&) = delete;
    AfterTake& operator=(const AfterTake&) = delete;

    /// Called once, at the start: removes what killed processes left, and takes their pending copies up again.
    void resume();

    /// For each take that has ended: makes `copy`, and hands the take to the music library if there is one. `take` is
    /// its absolute path. A failure is shown as one sentence. Without a copy the library is looked for first, so that a
    /// take with nothing to do never shows as being worked on.
    void afterTake(const QString& take, const QDateTime& recorded, std::optional<ExportFormat> copy, bool toMusic);

    /// Hands to `done`, later, where a panel for saving begins: the copy's usual name in the folder of copies, which is
    /// made, or at least was tried.
    void suggestDestination(
        const Take& take, ExportFormat format, std::function<void(const QString& destination)> done);
    /// Makes a copy where the user wants it and selects it in the file manager, or shows a sentence.
    void exportTake(const Take& take, ExportFormat format, const QString& destination);

    /// Hands a take to the music library, or asks for its folder.
    void addTakeToMusic(const Take& take);
    /// Called with a take that is to go to the music library while nobody knows its folder.
    void setOnInboxMissing(std::function<void(const Take& take)> callback) { m_onInboxMissing = std::move(callback); }
    /// The user picked a folder for the music library: remembers what it stands for and goes on with the take that
    /// waits for it, or shows why it is none.
    void chooseInbox(const QString& picked, const std::optional<Take>& waiting = std::nullopt);

    /// Gives up the copy of a take that is being made; nothing is shown.
    void stopExport(const QString& take);

    /// Brings a take's shape into the model, unless it is there, is being read or the take still runs.
    void requestOverview(const Take& take);

private:
    using Stop = std::shared_ptr<std::atomic<bool>>;

    [[nodiscard]] bool isBusy(const QString& take) const;
    /// Enters the take as being worked on.
    [[nodiscard]] CopyWork begin(const QString& take, const QDateTime& recorded);
    void end(const QString& take);
    /// Looks for the music library, once at a time for each take, and calls `done` unless the take is worked on then.
    void withInbox(const QString& take, std::function<void(const std::optional<QString>& inbox)> done);
    void makePending(const PendingCopy& wanted, const QDateTime& recorded);
    void showSaved(const std::optional<QString>& words);
    void exported(const QString& destination, const CopyOutcome& outcome);
    void readNextOverview();

    AppModel& m_model;
    ModelServices m_services;
    std::function<void(const Take& take)> m_onInboxMissing;
    std::map<QString, Stop> m_stops;  ///< Of the work that is under way.
    std::set<QString> m_inboxSought;  ///< The takes that the music library is looked for.
    std::deque<Take> m_wantedOverviews;
    bool m_readsOverview = false;
    Guard m_guard;
};

}  // namespace vantiro
