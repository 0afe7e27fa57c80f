// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <span>

namespace vantiro {

/// The audio of a file as 32-bit float planes, one a channel, 1.0 is full scale. Samples of a floating-point file come
/// as they are, infinite ones and such that are no number too. A file that gives less than it states ends early and is
/// no failure.
class TakeReader {
public:
    struct Format {
        double sampleRate = 0;    ///< Hz, above 0.
        int channels = 0;         ///< At least 1.
        std::int64_t frames = 0;  ///< What whole frames the file holds, or an estimate if only decoding can tell.

        bool operator==(const Format&) const = default;
    };

    /// Opens the file at a path. The failure tells what is wrong with the file. Any thread.
    using DecoderOpener = Result<std::unique_ptr<TakeReader>> (*)(const QString& path);

    /// Opens linear PCM in CAF and WAV by itself (16, 24, 32-bit integers, 32 and 64-bit floats), everything else by
    /// the platform's decoders. What is no regular file is refused. The failure tells what is wrong with the file. Any
    /// thread.
    [[nodiscard]] static Result<std::unique_ptr<TakeReader>> open(const QString& path);

    /// The platform's decoders from now on; null for none. Any thread.
    static void setDecoder(DecoderOpener opener);

    virtual ~TakeReader() = default;

    TakeReader(const TakeReader&) = delete;
    TakeReader& operator=(const TakeReader&) = delete;

    [[nodiscard]] virtual const Format& format() const = 0;
    /// Fills `planes` (as many as there are channels, each with room for `frames`) with the frames from `first` on, and
    /// returns how many there were: fewer than asked for, or none, at the end. Fails only if the disk does.
    [[nodiscard]] virtual Result<std::int64_t> read(
        std::int64_t first, std::span<float* const> planes, std::int64_t frames) = 0;
    /// read() may be called on several threads at once, at any place.
    [[nodiscard]] virtual bool isParallel() const = 0;

protected:
    TakeReader() = default;
};

}  // namespace vantiro
