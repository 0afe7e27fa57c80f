// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/FfmpegDecoder.h"

#include <cerrno>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace vantiro {

namespace {

    /// Containers of sound. The rest of what FFmpeg knows includes lists that name other files.
    constexpr const char* containers =
        "aac,ac3,aiff,amr,ape,asf,au,caf,dsf,dts,eac3,flac,matroska,mov,mp3,mpc,mpc8,ogg,"
        "tak,tta,w64,wav,wv";

}  // namespace

std::expected<ffmpeg::Input, int> FfmpegDecoder::openContainer(const QString& path)
{
    ffmpeg::silenceLog();
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    av_dict_set(&options, "format_whitelist", containers, 0);
    AVFormatContext* format = nullptr;
    int status = avformat_open_input(&format, ffmpeg::address(path).constData(), nullptr, &options);
    av_dict_free(&options);
    if (status < 0) {
        return std::unexpected(status);
    }
    ffmpeg::Input input(format);
    status = avformat_find_stream_info(format, nullptr);
    return status < 0 ? std::expected<ffmpeg::Input, int>(std::unexpected(status)) : std::move(input);
}

std::expected<FfmpegDecoder, int> FfmpegDecoder::open(const QString& path)
{
    auto input = openContainer(path);
    if (!input) {
        return std::unexpected(input.error());
    }
    AVFormatContext* format = input->get();
    FfmpegDecoder decoder;
    decoder.m_format = *std::move(input);
    const AVCodec* codec = nullptr;
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    if (index < 0) {
        return std::unexpected(index);
    }
    for (unsigned other = 0; other < format->nb_streams; ++other) {
        format->streams[other]->discard = AVDISCARD_ALL;
    }
    decoder.m_stream = format->streams[index];
    decoder.m_stream->discard = AVDISCARD_DEFAULT;
    decoder.m_codec.reset(avcodec_alloc_context3(codec));
    decoder.m_packet.reset(av_packet_alloc());
    decoder.m_frame.reset(av_frame_alloc());
    if (!decoder.m_codec || !decoder.m_packet || !decoder.m_frame) {
        return std::unexpected(AVERROR(ENOMEM));
    }
    int status = avcodec_parameters_to_context(decoder.m_codec.get(), decoder.m_stream->codecpar);
    // What an encoder put around the audio is cut off by time.
    decoder.m_codec->pkt_timebase = decoder.m_stream->time_base;
    // A piece belongs to the packet before it only while one thread decodes.
    decoder.m_codec->thread_count = 1;
    if (status >= 0) {
        status = avcodec_open2(decoder.m_codec.get(), codec, nullptr);
    }
    if (status < 0) {
        return std::unexpected(status);
    }
    return decoder;
}

std::optional<double> FfmpegDecoder::statedSeconds() const
{
    const std::int64_t duration = m_stream->duration;
    if (duration > 0 && m_format->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE) {
        return static_cast<double>(duration) * av_q2d(m_stream->time_base);
    }
    return std::nullopt;
}

double FfmpegDecoder::skipToEnd()
{
    std::int64_t duration = 0;
    while (readPacket().value_or(false)) {
        duration += m_packet->duration;
    }
    return static_cast<double>(duration) * av_q2d(m_stream->time_base);
}

std::expected<const AVFrame*, int> FfmpegDecoder::next()
{
    while (true) {
        const int received = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (received >= 0 && m_frame->nb_samples > 0) {
            return m_frame.get();
        }
        if (received == AVERROR(ENOMEM)) {
            return std::unexpected(received);
        }
        if (received >= 0) {
            continue;
        }
        if (m_isDraining) {
            return nullptr;
        }
        const auto isThere = readPacket();
        if (!isThere) {
            return std::unexpected(isThere.error());
        }
        if (*isThere) {
            const std::int64_t time = m_packet->pts != AV_NOPTS_VALUE ? m_packet->pts : m_packet->dts;
            m_place = {time != AV_NOPTS_VALUE ? std::optional(time) : std::nullopt, m_packet->pos};
        }
        m_isDraining = !*isThere;
        const int sent = avcodec_send_packet(m_codec.get(), m_isDraining ? nullptr : m_packet.get());
        if (sent == AVERROR(ENOMEM)) {
            return std::unexpected(sent);
        }
    }
}

std::expected<bool, int> FfmpegDecoder::readPacket()
{
    do {
        av_packet_unref(m_packet.get());
        const int status = av_read_frame(m_format.get(), m_packet.get());
        // A container that breaks off fails in many ways; the disk's own failures are kept apart.
        const int disk = m_format->pb != nullptr ? m_format->pb->error : 0;
        if (status < 0 && (status == AVERROR(ENOMEM) || (disk < 0 && disk != AVERROR_EOF))) {
            return std::unexpected(disk < 0 && disk != AVERROR_EOF ? disk : status);
        }
        if (status < 0) {
            return false;
        }
    } while (m_packet->stream_index != m_stream->index);
    return true;
}

bool FfmpegDecoder::seek(std::int64_t time)
{
    m_isDraining = false;
    avcodec_flush_buffers(m_codec.get());
    return avformat_seek_file(m_format.get(), m_stream->index, INT64_MIN, time, time, 0) >= 0;
}

}  // namespace vantiro
