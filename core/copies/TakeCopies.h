// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyEncoder.h"
#include "core/copies/TakeExporter.h"
#include "core/copies/TakeTags.h"

#include <QDateTime>
#include <QString>
#include <QTimeZone>

#include <optional>

/// What the window and the terminal both do with copies of a take: where they go, what they say, and how one reaches
/// the music library. Paths are absolute.
namespace vantiro::TakeCopies {

/// The folder for the copies of the takes in a folder. Nobody has made it yet.
[[nodiscard]] QString folder(const QString& takesFolder);

/// The tags of a copy: dates in `timeZone`, the artist as TakeTagging::artist has it, the application's icon as cover.
[[nodiscard]] TakeTags tags(const QDateTime& recorded, const std::optional<QString>& djName, const QTimeZone& timeZone);

/// `wanted`, or Apple Lossless where AAC cannot take the rate or the channels of the take. For copies that nobody
/// watches: whoever asks for AAC by name is told instead.
[[nodiscard]] ExportFormat possibleFormat(ExportFormat wanted, const QString& take);

/// A copy of the take in this format is what the music library gets: AAC where that can be, else Apple Lossless.
[[nodiscard]] bool servesMusic(ExportFormat format, const QString& take);

/// What is handed to the music library.
struct ForMusic {
    QString take;
    QString copies;  ///< folder() of the take; it need not exist.
    TakeTags tags;
    std::optional<QString> inbox;                ///< From MusicInbox::locateInbox.
    std::optional<QString> copy = std::nullopt;  ///< One that was made just now, and servesMusic().
    CopyEncoder::Progress progress = {};         ///< Of a copy that has to be made; may be empty.
    CopyEncoder::Cancelled cancelled = {};       ///< May be empty.
};

/// Hands a copy to the music library: `copy`, else an AAC copy of the take that was made earlier and lies in `copies`
/// (one that lacks the tags gets them), else one that is made for this alone and removed again. Blocks; any thread.
[[nodiscard]] CopyOutcome addToMusic(const ForMusic& request);

}  // namespace vantiro::TakeCopies
