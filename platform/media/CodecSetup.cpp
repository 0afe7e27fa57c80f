// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/CodecSetup.h"

#include "core/copies/CopyWords.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

namespace vantiro::CodecSetup {

namespace {

    constexpr std::int64_t aacBitRate = 256'000;
    constexpr int losslessBits = 24;

    struct Kind {
        AVCodecID codec = AV_CODEC_ID_NONE;
        AVSampleFormat samples = AV_SAMPLE_FMT_NONE;
        /// What so many channels, from one on, are called; 0 for what the format has no place for. A layout that a
        /// format does not have by itself would be mixed into another one on the way.
        std::array<std::uint64_t, 8> layouts{};
    };

    std::optional<Kind> kindOf(ExportFormat format)
    {
        switch (format) {
        case ExportFormat::flac:
            return Kind{AV_CODEC_ID_FLAC, AV_SAMPLE_FMT_S32,
                {AV_CH_LAYOUT_MONO, AV_CH_LAYOUT_STEREO, AV_CH_LAYOUT_SURROUND, AV_CH_LAYOUT_QUAD,
                    AV_CH_LAYOUT_5POINT0_BACK, AV_CH_LAYOUT_5POINT1_BACK, AV_CH_LAYOUT_6POINT1, AV_CH_LAYOUT_7POINT1}};
        case ExportFormat::alac:
            return Kind{AV_CODEC_ID_ALAC, AV_SAMPLE_FMT_S32P,
                {AV_CH_LAYOUT_MONO, AV_CH_LAYOUT_STEREO, AV_CH_LAYOUT_SURROUND, AV_CH_LAYOUT_4POINT0,
                    AV_CH_LAYOUT_5POINT0_BACK, AV_CH_LAYOUT_5POINT1_BACK, AV_CH_LAYOUT_6POINT1_BACK,
                    AV_CH_LAYOUT_7POINT1_WIDE_BACK}};
        case ExportFormat::aac:
            return Kind{AV_CODEC_ID_AAC, AV_SAMPLE_FMT_FLTP,
                // From six on, one channel is for low tones, and loses all others.
                {AV_CH_LAYOUT_MONO, AV_CH_LAYOUT_STEREO, AV_CH_LAYOUT_SURROUND, AV_CH_LAYOUT_4POINT0,
                    AV_CH_LAYOUT_5POINT0_BACK}};
        case ExportFormat::wav:
            break;
        }
        return std::nullopt;
    }

    bool takesRate(const AVCodec& codec, int rate)
    {
        // The list ends with a 0; without one any rate may do.
        for (const int* known = codec.supported_samplerates; known != nullptr; ++known) {
            if (*known == rate || *known == 0) {
                return *known != 0;
            }
        }
        return true;
    }

}  // namespace

Result<ffmpeg::Codec> open(const CopyEncoder::Plan& plan)
{
    ffmpeg::silenceLog();
    const auto refusal = CopyWords::cannotConvert(plan.format);
    const std::optional<Kind> kind = kindOf(plan.format);
    const AVCodec* codec = kind ? avcodec_find_encoder(kind->codec) : nullptr;
    const int rate = static_cast<int>(std::clamp(plan.sampleRate, 0.0, 1e9));
    if (codec == nullptr || rate != plan.sampleRate || !takesRate(*codec, rate) || plan.channels < 1
        || plan.channels > std::ssize(kind->layouts)) {
        return refusal;
    }
    const std::uint64_t layout = kind->layouts[static_cast<std::size_t>(plan.channels - 1)];
    ffmpeg::Codec context(avcodec_alloc_context3(codec));
    if (layout == 0 || !context || av_channel_layout_from_mask(&context->ch_layout, layout) < 0) {
        return refusal;
    }
    context->sample_rate = rate;
    context->sample_fmt = kind->samples;
    context->time_base = {1, rate};
    if (plan.format == ExportFormat::aac) {
        context->bit_rate = aacBitRate;
        // Slow and good, whatever a version of the library takes by itself.
        av_opt_set(context->priv_data, "aac_coder", "twoloop", 0);
    } else {
        context->bits_per_raw_sample = losslessBits;
    }
    // What M4A says of the codec stands in its header.
    if (plan.format != ExportFormat::flac) {
        context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    if (avcodec_open2(context.get(), codec, nullptr) < 0 || context->frame_size <= 0) {
        return refusal;
    }
    return context;
}

}  // namespace vantiro::CodecSetup
