// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/takes/ExportFormat.h"

#include <QString>

/// What a copy that cannot be made says, in the one wording for all encoders: each a CaptureError, shown as it stands.
/// A status is a positive errno or an encoder's own number. Any thread.
namespace vantiro::CopyWords {

[[nodiscard]] std::unexpected<Error> overwritesTake();
/// `name` is the take's file name, here and below.
[[nodiscard]] std::unexpected<Error> stillRecorded(const QString& name);
[[nodiscard]] std::unexpected<Error> cannotOpen(const QString& name);
[[nodiscard]] std::unexpected<Error> readError(const QString& name);
[[nodiscard]] std::unexpected<Error> tooLongForWav();
[[nodiscard]] std::unexpected<Error> cannotConvert(ExportFormat format);
/// `folder` is where the copy would lie.
[[nodiscard]] std::unexpected<Error> noRoom(const QString& folder);
/// `name` is the copy's file name, which its temporary file has too.
[[nodiscard]] std::unexpected<Error> cannotCreate(const QString& name, int status);
[[nodiscard]] std::unexpected<Error> writeError(int status);
[[nodiscard]] std::unexpected<Error> cannotFinish(const QString& name, int status);
/// Whoever asked for it knows already.
[[nodiscard]] std::unexpected<Error> cancelled();

}  // namespace vantiro::CopyWords
