// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/FfmpegSamples.h"

#include <algorithm>
#include <concepts>
#include <limits>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/samplefmt.h>
}

namespace vantiro::FfmpegSamples {

namespace {

    template <class Sample>
    float asFloat(Sample sample)
    {
        if constexpr (std::floating_point<Sample>) {
            return static_cast<float>(sample);
        } else if constexpr (std::unsigned_integral<Sample>) {
            return static_cast<float>(sample - 128) / 128.0F;
        } else {
            // Full scale is a power of two, so that only the conversion rounds.
            constexpr float fullScale = -static_cast<float>(std::numeric_limits<Sample>::min());
            return static_cast<float>(sample) / fullScale;
        }
    }

    template <class Sample>
    void copyAs(
        const AVFrame& piece, std::int64_t from, std::span<float* const> planes, std::int64_t at, std::int64_t count)
    {
        const bool isPlanar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(piece.format)) != 0;
        const auto channels = static_cast<std::int64_t>(planes.size());
        const std::int64_t step = isPlanar ? 1 : channels;
        for (std::int64_t channel = 0; channel < channels; ++channel) {
            const std::uint8_t* const bytes = piece.extended_data[isPlanar ? channel : 0];
            const auto* samples = reinterpret_cast<const Sample*>(bytes) + from * step + (isPlanar ? 0 : channel);
            float* const target = planes[static_cast<std::size_t>(channel)] + at;
            for (std::int64_t frame = 0; frame < count; ++frame) {
                target[frame] = asFloat(samples[frame * step]);
            }
        }
    }

}  // namespace

void copy(const AVFrame& piece, std::int64_t from, std::span<float* const> planes, std::int64_t at, std::int64_t count)
{
    switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(piece.format))) {
    case AV_SAMPLE_FMT_U8:
        return copyAs<std::uint8_t>(piece, from, planes, at, count);
    case AV_SAMPLE_FMT_S16:
        return copyAs<std::int16_t>(piece, from, planes, at, count);
    case AV_SAMPLE_FMT_S32:
        return copyAs<std::int32_t>(piece, from, planes, at, count);
    case AV_SAMPLE_FMT_S64:
        return copyAs<std::int64_t>(piece, from, planes, at, count);
    case AV_SAMPLE_FMT_FLT:
        return copyAs<float>(piece, from, planes, at, count);
    case AV_SAMPLE_FMT_DBL:
        return copyAs<double>(piece, from, planes, at, count);
    default:
        for (float* const plane : planes) {
            std::fill_n(plane + at, count, 0.0F);
        }
    }
}

}  // namespace vantiro::FfmpegSamples
