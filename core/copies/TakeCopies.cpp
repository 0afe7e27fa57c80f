// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/TakeCopies.h"

#include "core/artwork/CoverArt.h"
#include "core/copies/CopyFolder.h"
#include "core/copies/CopyMedia.h"
#include "core/copies/CopyWords.h"
#include "core/copies/MusicInbox.h"
#include "core/copies/TakeTagging.h"
#include "core/foundation/Log.h"
#include "core/takes/TakeReader.h"

#include <QDir>

#include <utility>

namespace vantiro::TakeCopies {

namespace {

    using Stage = CopyFailure::Stage;

    bool isCancelled(const ForMusic& request)
    {
        return request.cancelled && request.cancelled();
    }

    /// An AAC copy of the take that lies among the copies, with its tags where they can be given.
    std::optional<QString> earlierCopy(const ForMusic& request)
    {
        QString copy = QDir(request.copies).filePath(TakeExporter::suggestedName(request.take, ExportFormat::aac));
        const auto facts = CopyMedia::factsOf(copy);
        if (!facts || !facts->isAAC) {
            return std::nullopt;
        }
        if (!facts->album) {
            if (const auto tagged = TakeExporter::writeTags(request.tags, copy); !tagged) {
                logLine(QStringLiteral("%1: %2").arg(copy, errorText(tagged.error())));
            }
        }
        return copy;
    }

    CopyOutcome handOver(const QString& copy, const ForMusic& request)
    {
        return isCancelled(request) ? copyFailure(Stage::cancelled, CopyWords::cancelled())
                                    : MusicInbox::addToMusic(copy, request.inbox, request.cancelled);
    }

    /// Where a copy for the hand-over alone is made: beside the take, since the system's own temporary folder is often
    /// memory, and where nothing can be written there, near the inbox.
    Result<CopyFolder> folderForHandOver(const ForMusic& request)
    {
        for (const QString& neighbour : {request.take, *request.inbox}) {
            if (Result<CopyFolder> folder = CopyFolder::beside(neighbour)) {
                return folder;
            }
        }
        return CopyFolder::beside(QDir(*request.inbox).filePath(QStringLiteral("copy")));
    }

    CopyOutcome handOverCopyOfItsOwn(const ForMusic& request)
    {
        const Result<CopyFolder> folder = folderForHandOver(request);
        if (!folder) {
            return std::unexpected(CopyFailure{Stage::failed, folder.error()});
        }
        const ExportFormat format = possibleFormat(ExportFormat::aac, request.take);
        const QString copy = QDir(folder->path()).filePath(TakeExporter::suggestedName(request.take, format));
        const CopyOutcome made = TakeExporter::exportTake({.source = request.take,
            .destination = copy,
            .format = format,
            .tags = request.tags,
            .progress = request.progress,
            .cancelled = request.cancelled});
        return made ? handOver(copy, request) : made;
    }

}  // namespace

QString folder(const QString& takesFolder)
{
    return QDir(takesFolder).filePath(QStringLiteral("Copies"));
}

TakeTags tags(const QDateTime& recorded, const std::optional<QString>& djName, const QTimeZone& timeZone)
{
    return {.title = TakeTagging::title(recorded, timeZone),
        .artist = TakeTagging::artist(djName, std::nullopt),
        .releaseDate = TakeTagging::releaseDate(recorded, timeZone),
        .recorded = recorded,
        .artwork = coverArt()};
}

ExportFormat possibleFormat(ExportFormat wanted, const QString& take)
{
    if (wanted != ExportFormat::aac) {
        return wanted;
    }
    const Result<std::unique_ptr<TakeReader>> reader = TakeReader::open(take);
    if (!reader) {
        return wanted;
    }
    const TakeReader::Format& format = (*reader)->format();
    const auto can = [&](ExportFormat tried) {
        return CopyEncoder::open({tried, take, format.sampleRate, format.channels}).has_value();
    };
    return can(ExportFormat::aac) || !can(ExportFormat::alac) ? wanted : ExportFormat::alac;
}

bool servesMusic(ExportFormat format, const QString& take)
{
    return format == possibleFormat(ExportFormat::aac, take);
}

CopyOutcome addToMusic(const ForMusic& request)
{
    if (!request.inbox) {
        return std::unexpected(CopyFailure{Stage::refused, MusicInbox::missing()});
    }
    const std::optional<QString> copy = request.copy ? request.copy : earlierCopy(request);
    return copy ? handOver(*copy, request) : handOverCopyOfItsOwn(request);
}

}  // namespace vantiro::TakeCopies
