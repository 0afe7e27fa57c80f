// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace vantiro {

/// Why a take ended.
enum class TakeEnding {
    stopped,       ///< Somebody asked for it.
    deviceLost,    ///< The device, or the audio service with it, went away.
    sourceQuit,    ///< The program that was recorded ended.
    rateChanged,   ///< The source went on at another sample rate.
    inputStalled,  ///< The source is there and sends nothing any more.
    diskFull,      ///< The take was closed while that was still possible.
    wavLimit,      ///< A WAV file holds no more.
    writeFailed,   ///< The disk refused a write.
};

/// The word under "endedBecause" in the last take's record; nothing for a plain stop, and for a failed write, which the
/// record's counters tell.
[[nodiscard]] std::optional<QString> endedBecause(TakeEnding ending);

}  // namespace vantiro
