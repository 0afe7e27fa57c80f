// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyEncoder.h"
#include "core/takes/TakeReader.h"
#include "platform/media/FfmpegHandles.h"
#include "platform/media/PacketRun.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vantiro {

/// Encodes a take from one packet on, as if the take began there. One thread at a time.
class StretchEncoder {
public:
    /// What is kept of the samples beside their packets.
    enum class Keep {
        nothing,
        packed,  ///< As 24-bit integers, little endian, interleaved. Not for AAC.
    };

    /// `packet` is the number of the first packet. The reader outlives the encoder. Fails as CodecSetup::open.
    [[nodiscard]] static Result<StretchEncoder> open(
        const CopyEncoder::Plan& plan, TakeReader& reader, std::int64_t packet, Keep keep = Keep::nothing);

    /// Appends packets to a run, `count` at the most: fewer only once the take has ended and all of it is out. Fails
    /// with the reader's failure, or CopyWords::writeError with the encoder's number.
    [[nodiscard]] Result<void> encode(PacketRun& run, std::int64_t count);

    /// The frames of the take that have gone in.
    [[nodiscard]] std::int64_t framesTaken() const { return m_frame - m_firstFrame; }
    /// The take has ended, and all of it is out.
    [[nodiscard]] bool isAtEnd() const { return m_isAtEnd; }
    /// The samples of all that has gone in since the last call.
    [[nodiscard]] std::vector<std::byte> takePacked() { return std::exchange(m_packed, {}); }

private:
    StretchEncoder(ffmpeg::Codec codec, ffmpeg::Frame frame, ffmpeg::Packet packet, TakeReader& reader, Keep keep,
        std::int64_t firstFrame);

    /// Gives the encoder the next frames, or tells it that there are none.
    [[nodiscard]] Result<void> feed();
    /// Reads the frames of one packet into m_input. How many there were.
    [[nodiscard]] Result<std::int64_t> fill();
    /// Turns the first `count` frames of m_planes into the integers of m_input.
    void quantise(std::size_t count);

    ffmpeg::Codec m_codec;
    ffmpeg::Frame m_input;
    ffmpeg::Packet m_output;
    TakeReader* m_reader;
    Keep m_keep;
    std::int64_t m_firstFrame;
    std::int64_t m_frame;
    std::vector<float> m_samples;  ///< Planes of one packet's frames.
    std::vector<float*> m_planes;  ///< Of m_samples, or of m_input where the encoder takes floats.
    std::vector<float> m_interleaved;
    std::vector<std::byte> m_bytes;
    std::vector<std::byte> m_packed;
    bool m_isDraining = false;
    bool m_isAtEnd = false;
};

}  // namespace vantiro
