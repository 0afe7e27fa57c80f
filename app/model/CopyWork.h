// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/PendingCopies.h"
#include "core/copies/TakeExporter.h"
#include "core/copies/TakeTags.h"
#include "core/foundation/Trace.h"

#include <QDateTime>
#include <QString>

#include <optional>
#include <vector>

namespace vantiro {

/// Work on the copies of one take, with all that it needs: whoever asked for it may be gone before it ends. Every
/// function blocks; any thread.
struct CopyWork {
    /// A copy that an earlier run of the program owes to a take.
    struct Owed {
        PendingCopy wanted;
        QDateTime recorded;  ///< When the take was.
    };

    QString take;
    QString copies;  ///< The folder of copies.
    TakeTags tags;
    std::optional<QString> inboxChoice;  ///< The user's choice for the music library.
    Trace trace;
    CopyEncoder::Progress progress;
    CopyEncoder::Cancelled cancelled;

    /// Makes the copy and hands the take to the music library, as wanted; a take is noted as pending meanwhile. A music
    /// library that is not there is passed over. Returns what a user has to know of a failure, as the end of a
    /// sentence.
    [[nodiscard]] std::optional<QString> makePending(const PendingCopy& wanted) const;

    /// Makes one copy where the user wants it.
    [[nodiscard]] CopyOutcome exportTo(const QString& destination, ExportFormat format) const;

    /// Hands the take to the music library, as TakeCopies does; `copy` is one that was made just now.
    [[nodiscard]] CopyOutcome addToMusic(const QString& inbox, const std::optional<QString>& copy = std::nullopt) const;

    /// What a user has to know of a failure of addToMusic(), as the end of a sentence.
    [[nodiscard]] static std::optional<QString> musicWords(const CopyFailure& failure);

    /// The sentence that a failure brings along; the others are for logs.
    [[nodiscard]] static std::optional<QString> ownWords(const CopyFailure& failure);

    /// Makes the folder of copies, but not in the place of a disk that is not there.
    [[nodiscard]] static Result<void> makeFolder(const QString& copies);

    /// Takes up the copies of processes that are gone. Takes that are gone are forgotten, those on a disk that is not
    /// there are kept for a later start.
    [[nodiscard]] static std::vector<Owed> takeUp();

private:
    [[nodiscard]] std::optional<QString> makeWanted(const PendingCopy& wanted) const;
};

}  // namespace vantiro
