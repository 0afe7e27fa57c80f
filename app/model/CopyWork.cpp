// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/CopyWork.h"

#include "core/copies/MusicInbox.h"
#include "core/copies/TakeCopies.h"
#include "core/foundation/Files.h"
#include "core/foundation/Log.h"
#include "core/sources/PreflightFacts.h"
#include "core/takes/Takes.h"

#include <QCoreApplication>
#include <QDir>

namespace vantiro {

namespace {

    using Stage = CopyFailure::Stage;

    struct Words {
        Q_DECLARE_TR_FUNCTIONS(AfterTake)
    };

    /// The take and its copy are there all the same; only a later start would not know of what is left to do.
    void logPending(const Result<void>& changed)
    {
        if (!changed) {
            logLine(QStringLiteral("The list of pending copies: %1").arg(errorText(changed.error())));
        }
    }

    std::optional<QString> wordsOf(const CopyFailure& failure, const QString& usual)
    {
        return failure.stage == Stage::cancelled ? std::nullopt
                                                 : std::optional(CopyWork::ownWords(failure).value_or(usual));
    }

}  // namespace

std::optional<QString> CopyWork::makePending(const PendingCopy& wanted) const
{
    logPending(PendingCopies::add(wanted));
    auto words = makeWanted(wanted);
    logPending(PendingCopies::remove(wanted.take));
    return words;
}

std::optional<QString> CopyWork::makeWanted(const PendingCopy& wanted) const
{
    std::optional<QString> copy;
    if (wanted.format) {
        const ExportFormat format = TakeCopies::possibleFormat(*wanted.format, take);
        const QString destination = QDir(copies).filePath(TakeExporter::suggestedName(take, format));
        const Result<void> folder = makeFolder(copies);
        const CopyOutcome made =
            folder ? exportTo(destination, format) : std::unexpected(CopyFailure{Stage::failed, folder.error()});
        if (!made) {
            trace.line([&] { return QStringLiteral("copy: ") + errorText(made.error().error); });
            return wordsOf(made.error(),
                Words::tr("its %1 copy did not finish. Export it from the takes list.").arg(label(format)));
        }
        if (wanted.toMusic && TakeCopies::servesMusic(format, take)) {
            copy = destination;
        }
    }
    // Looked for no sooner: it may lie on a disk that does not answer.
    const auto inbox = wanted.toMusic ? MusicInbox::locateInbox(inboxChoice) : std::nullopt;
    if (!inbox) {
        return std::nullopt;
    }
    if (wanted.format) {
        logPending(PendingCopies::add({.take = take, .format = std::nullopt, .toMusic = true}));
    }
    const CopyOutcome added = addToMusic(*inbox, copy);
    return added ? std::nullopt : musicWords(added.error());
}

CopyOutcome CopyWork::exportTo(const QString& destination, ExportFormat format) const
{
    return TakeExporter::exportTake({.source = take,
        .destination = destination,
        .format = format,
        .tags = tags,
        .progress = progress,
        .cancelled = cancelled});
}

CopyOutcome CopyWork::addToMusic(const QString& inbox, const std::optional<QString>& copy) const
{
    CopyOutcome added = TakeCopies::addToMusic({.take = take,
        .copies = copies,
        .tags = tags,
        .inbox = inbox,
        .copy = copy,
        .progress = progress,
        .cancelled = cancelled});
    if (!added) {
        trace.line([&] { return QStringLiteral("music: ") + errorText(added.error().error); });
    }
    return added;
}

std::optional<QString> CopyWork::musicWords(const CopyFailure& failure)
{
    return wordsOf(failure, Words::tr("it did not reach Music. Use Add to Music in the takes list to try again."));
}

std::optional<QString> CopyWork::ownWords(const CopyFailure& failure)
{
    const bool isWorded = !std::holds_alternative<SystemError>(failure.error);
    return failure.stage == Stage::refused && isWorded ? std::optional(errorText(failure.error)) : std::nullopt;
}

Result<void> CopyWork::makeFolder(const QString& copies)
{
    // One in the place of a disk that is not there would hide the copies once the disk is back.
    if (const auto disk = PreflightFacts::volume(copies).missingVolume) {
        return captureFailure(Preflight::missingVolume(*disk).title);
    }
    return files::makeFolder(copies);
}

std::vector<CopyWork::Owed> CopyWork::takeUp()
{
    std::vector<Owed> owed;
    for (const PendingCopy& wanted : PendingCopies::takeUp()) {
        if (const auto take = Takes::describe(wanted.take)) {
            owed.push_back({wanted, take->created});
        } else if (!PreflightFacts::volume(wanted.take).missingVolume) {
            logPending(PendingCopies::remove(wanted.take));
        }
    }
    return owed;
}

}  // namespace vantiro
