// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/FfmpegHandles.h"

#include <QFile>

#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/error.h>
#include <libavutil/log.h>
}

namespace vantiro::ffmpeg {

void Release::operator()(AVCodecContext* context) const
{
    avcodec_free_context(&context);
}

void Release::operator()(AVCodecParameters* parameters) const
{
    avcodec_parameters_free(&parameters);
}

void Release::operator()(AVPacket* packet) const
{
    av_packet_free(&packet);
}

void Release::operator()(AVFrame* frame) const
{
    av_frame_free(&frame);
}

void ReleaseInput::operator()(AVFormatContext* context) const
{
    avformat_close_input(&context);
}

void ReleaseOutput::operator()(AVFormatContext* context) const
{
    avio_closep(&context->pb);
    avformat_free_context(context);
}

QByteArray address(const QString& path)
{
    return "file:" + QFile::encodeName(path);
}

void silenceLog()
{
    static const bool isSilent = (av_log_set_level(AV_LOG_QUIET), true);
    (void)isSilent;
}

Parameters parametersOf(const AVCodecContext& codec)
{
    Parameters parameters(avcodec_parameters_alloc());
    const bool isFilled = parameters && avcodec_parameters_from_context(parameters.get(), &codec) >= 0;
    return isFilled ? std::move(parameters) : nullptr;
}

int statusOf(int code)
{
    return AVUNERROR(code);
}

}  // namespace vantiro::ffmpeg
