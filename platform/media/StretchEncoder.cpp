// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/StretchEncoder.h"

#include "core/capture/PackedPcm.h"
#include "core/copies/CopyWords.h"
#include "platform/media/CodecSetup.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/samplefmt.h>
}

namespace vantiro {

namespace {

    /// Three packed bytes as the upper three of an integer.
    std::int32_t widened(const std::byte* packed)
    {
        const auto value = std::to_integer<std::uint32_t>(packed[0]) << 8U
            | std::to_integer<std::uint32_t>(packed[1]) << 16U | std::to_integer<std::uint32_t>(packed[2]) << 24U;
        return static_cast<std::int32_t>(value);
    }

    std::unexpected<Error> encoderFailure(int code)
    {
        return CopyWords::writeError(ffmpeg::statusOf(code));
    }

}  // namespace

StretchEncoder::StretchEncoder(ffmpeg::Codec codec, ffmpeg::Frame frame, ffmpeg::Packet packet, TakeReader& reader,
    Keep keep, std::int64_t firstFrame)
    : m_codec(std::move(codec))
    , m_input(std::move(frame))
    , m_output(std::move(packet))
    , m_reader(&reader)
    , m_keep(keep)
    , m_firstFrame(firstFrame)
    , m_frame(firstFrame)
{
    const auto channels = static_cast<std::size_t>(m_codec->ch_layout.nb_channels);
    const auto frames = static_cast<std::size_t>(m_codec->frame_size);
    m_planes.resize(channels);
    if (m_codec->sample_fmt == AV_SAMPLE_FMT_FLTP) {
        return;
    }
    m_samples.resize(channels * frames);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        m_planes[channel] = m_samples.data() + channel * frames;
    }
    m_interleaved.resize(channels * frames);
    m_bytes.resize(channels * frames * packedPcm::sampleBytes);
}

Result<StretchEncoder> StretchEncoder::open(
    const CopyEncoder::Plan& plan, TakeReader& reader, std::int64_t packet, Keep keep)
{
    auto codec = CodecSetup::open(plan);
    if (!codec) {
        return std::unexpected(std::move(codec.error()));
    }
    ffmpeg::Frame frame(av_frame_alloc());
    ffmpeg::Packet output(av_packet_alloc());
    if (!frame || !output) {
        return encoderFailure(AVERROR(ENOMEM));
    }
    frame->format = (*codec)->sample_fmt;
    frame->nb_samples = (*codec)->frame_size;
    frame->sample_rate = (*codec)->sample_rate;
    if (const int status = av_channel_layout_copy(&frame->ch_layout, &(*codec)->ch_layout); status < 0) {
        return encoderFailure(status);
    }
    if (const int status = av_frame_get_buffer(frame.get(), 0); status < 0) {
        return encoderFailure(status);
    }
    const std::int64_t firstFrame = packet * (*codec)->frame_size;
    return StretchEncoder(*std::move(codec), std::move(frame), std::move(output), reader, keep, firstFrame);
}

Result<void> StretchEncoder::encode(PacketRun& run, std::int64_t count)
{
    while (count > 0 && !m_isAtEnd) {
        const int received = avcodec_receive_packet(m_codec.get(), m_output.get());
        if (received == AVERROR(EAGAIN)) {
            if (auto fed = feed(); !fed) {
                return fed;
            }
        } else if (received == AVERROR_EOF) {
            m_isAtEnd = true;
        } else if (received < 0) {
            return encoderFailure(received);
        } else {
            // One without bytes tells what stands in FLAC's header.
            if (m_output->size > 0) {
                run.append({m_output->data, static_cast<std::size_t>(m_output->size)});
                --count;
            }
            av_packet_unref(m_output.get());
        }
    }
    return {};
}

Result<void> StretchEncoder::feed()
{
    const auto count = m_isDraining ? Result<std::int64_t>(0) : fill();
    if (!count) {
        return std::unexpected(count.error());
    }
    m_isDraining = *count == 0;
    m_input->nb_samples = static_cast<int>(*count);
    m_input->pts = m_frame - m_firstFrame;
    m_frame += *count;
    const int sent = avcodec_send_frame(m_codec.get(), m_isDraining ? nullptr : m_input.get());
    return sent < 0 ? Result<void>(encoderFailure(sent)) : Result<void>();
}

Result<std::int64_t> StretchEncoder::fill()
{
    m_input->nb_samples = m_codec->frame_size;
    if (const int status = av_frame_make_writable(m_input.get()); status < 0) {
        return encoderFailure(status);
    }
    const bool isFloat = m_codec->sample_fmt == AV_SAMPLE_FMT_FLTP;
    for (std::size_t channel = 0; isFloat && channel < m_planes.size(); ++channel) {
        m_planes[channel] = reinterpret_cast<float*>(m_input->extended_data[channel]);
    }
    auto count = m_reader->read(m_frame, m_planes, m_codec->frame_size);
    if (!count) {
        return count;
    }
    if (!isFloat) {
        quantise(static_cast<std::size_t>(*count));
        return count;
    }
    // Numbers that are no sound, which only files of others hold, are refused by the encoder or keep it busy for ever.
    constexpr float beyondSound = 1e6F;
    for (float* plane : m_planes) {
        std::replace_if(plane, plane + *count, [](float sample) { return !(std::abs(sample) < beyondSound); }, 0.0F);
    }
    return count;
}

void StretchEncoder::quantise(std::size_t count)
{
    const std::size_t channels = m_planes.size();
    const std::size_t samples = channels * count;
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const float* plane = m_planes[channel];
        for (std::size_t frame = 0; frame < count; ++frame) {
            m_interleaved[frame * channels + channel] = plane[frame];
        }
    }
    const auto bytes = std::span(m_bytes).first(samples * packedPcm::sampleBytes);
    packedPcm::pack(std::span(m_interleaved).first(samples), bytes);
    if (m_keep == Keep::packed) {
        m_packed.insert(m_packed.end(), bytes.begin(), bytes.end());
    }
    const bool isPlanar = av_sample_fmt_is_planar(m_codec->sample_fmt) != 0;
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const std::size_t stride = isPlanar ? 1 : channels;
        auto* out =
            reinterpret_cast<std::int32_t*>(m_input->extended_data[isPlanar ? channel : 0]) + (isPlanar ? 0 : channel);
        const std::byte* in = bytes.data() + channel * packedPcm::sampleBytes;
        for (std::size_t frame = 0; frame < count; ++frame) {
            out[frame * stride] = widened(in + frame * channels * packedPcm::sampleBytes);
        }
    }
}

}  // namespace vantiro
