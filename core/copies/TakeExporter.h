// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyEncoder.h"
#include "core/copies/CopyOutcome.h"
#include "core/copies/CopyRoom.h"

#include <QString>

#include <optional>

/// Makes copies of takes. The take itself is never touched.
namespace vantiro::TakeExporter {

struct Request {
    QString source;       ///< The take.
    QString destination;  ///< The copy's path; its folder must exist.
    ExportFormat format = ExportFormat::wav;
    std::optional<TakeTags> tags = std::nullopt;  ///< For formats that carry them.
    CopyEncoder::Progress progress = {};          ///< May be empty.
    CopyEncoder::Cancelled cancelled = {};        ///< May be empty.
};

/// The copy's usual file name: the take's, with the format's extension, and with " export" before it where that alone
/// would be the take's own name. Any thread.
[[nodiscard]] QString suggestedName(const QString& source, ExportFormat format);

/// The file holds AAC. A failure to read it says no. May load the platform's decoders; any thread.
[[nodiscard]] bool isAAC(const QString& path);

/// Gives an M4A file these tags and no others, its audio untouched, by way of ".tagging-{uuid}.m4a" beside it and in
/// one step. Whatever fails, such as for want of room, leaves the file as it was. Not twice at once on one file.
/// Blocks; any thread.
[[nodiscard]] Result<void> writeTags(
    const TakeTags& tags, const QString& file, const CopyRoom::Surroundings& surroundings = {});

/// Makes the copy in a folder beside its destination, and puts it there, synced, in one step. Whatever fails, or is
/// cancelled, leaves nothing behind, and an older file there as it was. A take that is being recorded is neither
/// copied, since a copy of its beginning would pass for the whole, nor replaced. The error is a CaptureError of
/// CopyWords, or the SystemError of the temporary folder or of the last step. Blocks; any thread, several at once.
[[nodiscard]] CopyOutcome exportTake(const Request& request, const CopyRoom::Surroundings& surroundings = {});

}  // namespace vantiro::TakeExporter
