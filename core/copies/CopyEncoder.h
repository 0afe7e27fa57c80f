// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/TakeTags.h"
#include "core/foundation/Result.h"
#include "core/takes/ExportFormat.h"
#include "core/takes/TakeReader.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace vantiro {

/// Writes the audio of a take as a file of one format, with the take's own rate and channels.
class CopyEncoder {
public:
    /// What the copy is to be.
    struct Plan {
        ExportFormat format = ExportFormat::wav;
        QString source;                               ///< The take's path.
        double sampleRate = 0;                        ///< Hz, as in TakeReader::Format.
        int channels = 0;                             ///< As there.
        std::optional<TakeTags> tags = std::nullopt;  ///< Formats that cannot carry them leave them out.
    };

    /// How much is done, 0 to 1. Once every 32768 frames or so, on any thread.
    using Progress = std::function<void(double)>;
    /// Whether the work is to end. Asked several times a second, on the thread that called encode().
    using Cancelled = std::function<bool()>;

    /// WAV is written by ourselves, everything else by the platform's encoders (CopyMedia). Fails, before anything is
    /// written, with CopyWords::cannotConvert for what the format cannot keep. Any thread.
    [[nodiscard]] static Result<std::unique_ptr<CopyEncoder>> open(const Plan& plan);

    virtual ~CopyEncoder() = default;

    CopyEncoder(const CopyEncoder&) = delete;
    CopyEncoder& operator=(const CopyEncoder&) = delete;

    /// Makes `file`, in a folder of its own, from all the frames of the reader; nothing is synced. Failures of the
    /// reader are passed on, all others have the words of CopyWords. Progress may be empty and is not called for a take
    /// that holds nothing; `cancelled` is not empty. What stands at `file` after a failure means nothing. Once; any
    /// thread.
    [[nodiscard]] virtual Result<void> encode(
        TakeReader& reader, const QString& file, const Progress& progress, const Cancelled& cancelled) = 0;

protected:
    CopyEncoder() = default;
};

}  // namespace vantiro
