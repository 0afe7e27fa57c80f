// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QByteArray>
#include <QJsonObject>

#include <cstdint>
#include <optional>

namespace vantiro {

/// The account of one capture: how much arrived, what was lost and why, and what clock it ran on. Its JSON form is kept
/// on disk, so keys stay as they are and a record without the five optional ones still decodes.
struct CaptureStats {
    double sampleRate = 0;             ///< Hz; 0 if it could not be read.
    std::int64_t channels = 0;         ///< Captured channels.
    std::int64_t frames = 0;           ///< Frames delivered to the capture.
    std::int64_t discontinuities = 0;  ///< Times the sample clock jumped by a frame or more.
    std::int64_t lostFrames = 0;       ///< Frames that the jumps skipped forward.
    std::int64_t overflowFrames = 0;   ///< Frames that a full ring refused.
    double audioSpan = 0;              ///< Seconds of audio up to the start of the last block.
    double hostSpan = 0;               ///< Seconds of host clock between the first and the last block.
    float peak = 0;                    ///< Largest magnitude of all channels, linear.
    bool deviceLost = false;
    bool sampleRateChanged = false;
    std::optional<std::int64_t> writeErrors = std::nullopt;       ///< Failed writes; absent without a file.
    std::optional<std::int64_t> fileFrames = std::nullopt;        ///< Frames of the closed file, read back from it.
    std::optional<bool> clockChecked = std::nullopt;              ///< A block carried a valid sample time.
    std::optional<bool> steadyTone = std::nullopt;                ///< The signal is one steady tone, as timecode is.
    std::optional<std::int64_t> droppedCallbacks = std::nullopt;  ///< Blocks that could not be read.

    bool operator==(const CaptureStats&) const = default;

    /// Frames delivered that the closed file does not hold, at least 0; absent while fileFrames is.
    [[nodiscard]] std::optional<std::int64_t> missingFrames() const;
    /// Audio that was delivered is not in the file. Jumps of the source's clock do not count.
    [[nodiscard]] bool writeFailed() const;
    /// Length of what was delivered, in seconds; 0 if the rate is unknown.
    [[nodiscard]] double seconds() const;
    /// How much faster the source's clock ran than the host's, in percent; 0 if there is nothing to compare.
    [[nodiscard]] double deviationPercent() const;
    /// The peak in dB.
    [[nodiscard]] float peakDB() const;

    /// The record as a JSON object. Optional fields without a value have no key; a value that is not finite becomes the
    /// largest number of its type, since JSON has no other.
    [[nodiscard]] QJsonObject toJson() const;
    /// The record as compact JSON text with the keys in the order of the fields, for readers that compare texts.
    [[nodiscard]] QByteArray toJsonText() const;
    /// The record in a JSON object. A missing or mistyped required key is an error; so is a mistyped optional one.
    [[nodiscard]] static Result<CaptureStats> fromJson(const QJsonObject& object);
};

}  // namespace vantiro
