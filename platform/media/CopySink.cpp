// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/CopySink.h"

#include "core/copies/CopyWords.h"

#include <cerrno>
#include <utility>

extern "C" {
#include <libavcodec/codec_par.h>
}

namespace vantiro {

CopySink::CopySink(CopyFile file, const AVCodecParameters& codec)
    : m_file(std::move(file))
    , m_packetFrames(codec.frame_size)
    , m_time(-codec.initial_padding)
{
    if (codec.codec_id == AV_CODEC_ID_FLAC) {
        m_flac.emplace(std::span(codec.extradata, FlacStream::streamInfoBytes), codec.ch_layout.nb_channels);
    }
}

Result<void> CopySink::add(const CopyPiece& piece, std::int64_t first, std::int64_t end)
{
    if (m_flac) {
        m_flac->addSamples(piece.packed);
    }
    for (std::int64_t number = first; number < end; ++number) {
        if (auto written = m_waiting.empty() ? Result<void>() : flush(m_packetFrames); !written) {
            return written;
        }
        auto packet = piece.packets.packet(number);
        packet = m_flac ? m_flac->add(packet, number) : packet;
        if (packet.empty()) {
            return CopyWords::writeError(EBADMSG);
        }
        m_waiting.assign(packet.begin(), packet.end());
    }
    return {};
}

Result<void> CopySink::finish(std::int64_t frames)
{
    auto written = m_waiting.empty() ? Result<void>() : flush(frames - m_time);
    if (written && m_flac) {
        written = m_file.writeStreamInfo(m_flac->streamInfo());
    }
    return written ? m_file.finish() : written;
}

Result<void> CopySink::flush(std::int64_t frames)
{
    auto written = m_file.write(m_waiting, m_time, frames);
    m_time += frames;
    return written;
}

}  // namespace vantiro
