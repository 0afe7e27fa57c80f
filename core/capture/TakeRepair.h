// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QString>
#include <QStringList>

#include <cstdint>

namespace vantiro {

/// What a repair found in one take file.
struct TakeRepair {
    enum class Outcome {
        whole,     ///< The header already told all the whole frames; nothing was touched.
        repaired,  ///< The header now tells all the whole frames.
        notATake,  ///< Not a file of ours, or one that another program has added to; nothing was touched.
    };

    Outcome outcome = Outcome::notATake;
    std::int64_t framesBefore = 0;  ///< Frames that the header told.
    std::int64_t frames = 0;        ///< Frames that it tells now.
};

/// Makes the header of a take whose recorder died tell every whole frame that the file holds; nothing else of the file
/// is touched, its size and modification time stay, and room reserved behind its end is given back. A take that some
/// recorder is writing is left alone. Done twice it changes nothing. To be called only when no recorder lives. Fails
/// with the SystemError of the call that failed. Blocks on the disk. Any thread.
[[nodiscard]] Result<TakeRepair> repairTake(const QString& path);

/// repairTake() on every .caf and .wav file of a folder. Returns the paths of those that were mended; files that cannot
/// be read are passed over. Any thread.
QStringList repairTakes(const QString& folder);

}  // namespace vantiro
