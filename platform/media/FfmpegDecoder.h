// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/FfmpegHandles.h"

#include <QString>

#include <cstdint>
#include <expected>
#include <optional>

struct AVStream;

namespace vantiro {

/// The first audio of a file, decoded piece by piece in order. Failures are FFmpeg's codes, errno among them.
class FfmpegDecoder {
public:
    /// Which packet of the file a piece came from.
    struct Packet {
        std::optional<std::int64_t> time;  ///< In the file's own unit.
        std::int64_t byte = 0;

        bool operator==(const Packet&) const = default;
    };

    /// Any thread.
    [[nodiscard]] static std::expected<FfmpegDecoder, int> open(const QString& path);
    /// Opens a file without its audio: containers of sound on the disk, and nothing that they name elsewhere. Any
    /// thread.
    [[nodiscard]] static std::expected<ffmpeg::Input, int> openContainer(const QString& path);

    /// How long the audio is in seconds, if the file tells more than its size.
    [[nodiscard]] std::optional<double> statedSeconds() const;
    /// Reads what is left of the file without decoding it, and returns how many seconds that is.
    [[nodiscard]] double skipToEnd();

    /// The next piece, which stays until the next call, or null at the end. Damaged packets are left out.
    [[nodiscard]] std::expected<const AVFrame*, int> next();
    /// The packet that the last piece came from.
    [[nodiscard]] const Packet& packet() const { return m_place; }
    /// Goes on with a packet of that time or an earlier one; the first pieces after it may differ from what they are
    /// when all before them is decoded. False if the file cannot be searched.
    [[nodiscard]] bool seek(std::int64_t time);

private:
    FfmpegDecoder() = default;

    /// The next packet of the audio, false at the end.
    [[nodiscard]] std::expected<bool, int> readPacket();

    ffmpeg::Input m_format;
    ffmpeg::Codec m_codec;
    ffmpeg::Packet m_packet;
    ffmpeg::Frame m_frame;
    AVStream* m_stream = nullptr;  ///< Of m_format.
    Packet m_place;
    bool m_isDraining = false;  ///< The decoder knows that no packet is left.
};

}  // namespace vantiro
