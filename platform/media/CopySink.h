// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/CopyFile.h"
#include "platform/media/FlacStream.h"
#include "platform/media/PieceQueue.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

struct AVCodecParameters;

namespace vantiro {

/// Takes the packets of a copy in their order and writes them. One thread at a time.
class CopySink {
public:
    CopySink(CopyFile file, const AVCodecParameters& codec);

    /// The next piece, from its packet `first` up to `end`.
    [[nodiscard]] Result<void> add(const CopyPiece& piece, std::int64_t first, std::int64_t end);
    /// The take had so many frames, and that is all of it.
    [[nodiscard]] Result<void> finish(std::int64_t frames);

private:
    /// Writes the packet that waits.
    [[nodiscard]] Result<void> flush(std::int64_t frames);

    CopyFile m_file;
    std::optional<FlacStream> m_flac;
    std::int64_t m_packetFrames;
    std::int64_t m_time;                  ///< Of the packet that waits, in frames.
    std::vector<std::uint8_t> m_waiting;  ///< How long a packet is, is known once it is not the last.
};

}  // namespace vantiro
