// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/TakeTags.h"
#include "core/foundation/Result.h"
#include "platform/media/FfmpegHandles.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <span>

struct AVCodecParameters;

namespace vantiro {

/// A copy on the disk: FLAC, or M4A with tags and a cover. Failures have the words of CopyWords. One thread at a time.
class CopyFile {
public:
    enum class Container {
        flac,
        m4a,
    };

    /// Makes the file for the audio of one codec, whose time counts in frames of `sampleRate` (Hz). FLAC carries no
    /// tags. Cut short of finish(), it is of no use.
    [[nodiscard]] static Result<CopyFile> create(const QString& path, Container container,
        const AVCodecParameters& codec, int sampleRate, const std::optional<TakeTags>& tags);

    /// Writes the next packet of the audio, which stays as it is. Time and length are frames; encoders that look ahead
    /// begin before 0.
    [[nodiscard]] Result<void> write(std::span<std::uint8_t> packet, std::int64_t time, std::int64_t frames);
    /// What FLAC's header says, known only after the last packet.
    [[nodiscard]] Result<void> writeStreamInfo(std::span<const std::uint8_t> streamInfo);
    /// Writes what is known only now, and closes the file. Once.
    [[nodiscard]] Result<void> finish();

private:
    CopyFile(ffmpeg::Output output, ffmpeg::Packet packet, QString name, int sampleRate);

    [[nodiscard]] Result<void> writeCover(const QByteArray& png);
    [[nodiscard]] Result<void> send();

    ffmpeg::Output m_output;
    ffmpeg::Packet m_packet;
    QString m_name;
    int m_sampleRate;
};

}  // namespace vantiro
