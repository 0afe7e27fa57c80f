// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/M4aFile.h"

#include "core/copies/CopyWords.h"
#include "platform/media/CopyFile.h"
#include "platform/media/FfmpegDecoder.h"

#include <QFileInfo>

#include <cerrno>

extern "C" {
#include <libavcodec/packet.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace vantiro::M4aFile {

namespace {

    struct Opened {
        ffmpeg::Input input;
        AVStream* audio = nullptr;  ///< Of the input.
    };

    Result<Opened> openAudio(const QString& path)
    {
        auto input = FfmpegDecoder::openContainer(path);
        const int index = input ? av_find_best_stream(input->get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0) : -1;
        if (index < 0) {
            return CopyWords::cannotOpen(QFileInfo(path).fileName());
        }
        Opened opened{.input = *std::move(input)};
        for (unsigned other = 0; other < opened.input->nb_streams; ++other) {
            opened.input->streams[other]->discard = AVDISCARD_ALL;
        }
        opened.audio = opened.input->streams[index];
        opened.audio->discard = AVDISCARD_DEFAULT;
        return opened;
    }

}  // namespace

Result<CopyMedia::Facts> inspect(const QString& path)
{
    const auto opened = openAudio(path);
    if (!opened) {
        return std::unexpected(opened.error());
    }
    CopyMedia::Facts facts{.isAAC = opened->audio->codecpar->codec_id == AV_CODEC_ID_AAC};
    if (const auto* album = av_dict_get(opened->input->metadata, "album", nullptr, 0); album != nullptr) {
        facts.album = QString::fromUtf8(album->value);
    }
    return facts;
}

Result<void> remux(const QString& source, const TakeTags& tags, const QString& target)
{
    auto opened = openAudio(source);
    if (!opened) {
        return std::unexpected(std::move(opened.error()));
    }
    const int rate = opened->audio->codecpar->sample_rate;
    auto made = CopyFile::create(target, CopyFile::Container::m4a, *opened->audio->codecpar, rate, tags);
    if (!made) {
        return std::unexpected(std::move(made.error()));
    }
    const ffmpeg::Packet packet(av_packet_alloc());
    if (!packet) {
        return CopyWords::writeError(ENOMEM);
    }
    while (true) {
        const int status = av_read_frame(opened->input.get(), packet.get());
        if (status == AVERROR_EOF) {
            return made->finish();
        }
        if (status < 0) {
            return CopyWords::readError(QFileInfo(source).fileName());
        }
        if (packet->stream_index == opened->audio->index) {
            av_packet_rescale_ts(packet.get(), opened->audio->time_base, {1, rate});
            auto written =
                made->write({packet->data, static_cast<std::size_t>(packet->size)}, packet->pts, packet->duration);
            if (!written) {
                return written;
            }
        }
        av_packet_unref(packet.get());
    }
}

}  // namespace vantiro::M4aFile
