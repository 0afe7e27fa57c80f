// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/CopyFile.h"

#include "core/copies/CopyWords.h"
#include "core/copies/TakeTagging.h"

#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

extern "C" {
#include <libavcodec/packet.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    constexpr int audioStream = 0;
    constexpr int coverStream = 1;

    struct PngSize {
        int width = 0;
        int height = 0;
    };

    /// Nothing if these are not the bytes of a PNG, whose first chunk has the size.
    std::optional<PngSize> sizeOfPng(const QByteArray& bytes)
    {
        constexpr qsizetype widthPlace = 16;
        constexpr qsizetype headerBytes = 24;
        constexpr int largestSide = 16384;
        if (bytes.size() < headerBytes || !bytes.startsWith(QByteArrayView("\x89PNG\r\n\x1A\n"))) {
            return std::nullopt;
        }
        const PngSize size{qFromBigEndian<qint32>(bytes.constData() + widthPlace),
            qFromBigEndian<qint32>(bytes.constData() + widthPlace + 4)};
        const bool isPossible = size.width > 0 && size.height > 0 && std::max(size.width, size.height) <= largestSide;
        return isPossible ? std::optional(size) : std::nullopt;
    }

    void setTag(AVDictionary** tags, const char* name, const QString& value)
    {
        av_dict_set(tags, name, value.toUtf8().constData(), 0);
    }

    void setTags(AVFormatContext& output, const TakeTags& tags)
    {
        setTag(&output.metadata, "title", tags.title);
        if (tags.artist) {
            setTag(&output.metadata, "artist", *tags.artist);
        }
        setTag(&output.metadata, "album", TakeTagging::album);
        setTag(&output.metadata, "genre", TakeTagging::genre);
        setTag(&output.metadata, "date", tags.releaseDate);
        if (tags.recorded.isValid()) {
            setTag(&output.metadata, "creation_time", tags.recorded.toUTC().toString(Qt::ISODate));
        }
    }

    AVStream* addAudio(AVFormatContext& output, const AVCodecParameters& codec, int sampleRate)
    {
        AVStream* stream = avformat_new_stream(&output, nullptr);
        if (stream == nullptr || avcodec_parameters_copy(stream->codecpar, &codec) < 0) {
            return nullptr;
        }
        // The container has its own word for each codec.
        stream->codecpar->codec_tag = 0;
        stream->time_base = {1, sampleRate};
        return stream;
    }

    AVStream* addCover(AVFormatContext& output, PngSize size)
    {
        AVStream* stream = avformat_new_stream(&output, nullptr);
        if (stream != nullptr) {
            stream->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
            stream->codecpar->codec_id = AV_CODEC_ID_PNG;
            stream->codecpar->width = size.width;
            stream->codecpar->height = size.height;
            stream->disposition = AV_DISPOSITION_ATTACHED_PIC;
        }
        return stream;
    }

}  // namespace

CopyFile::CopyFile(ffmpeg::Output output, ffmpeg::Packet packet, QString name, int sampleRate)
    : m_output(std::move(output))
    , m_packet(std::move(packet))
    , m_name(std::move(name))
    , m_sampleRate(sampleRate)
{ }

Result<CopyFile> CopyFile::create(const QString& path, Container container, const AVCodecParameters& codec,
    int sampleRate, const std::optional<TakeTags>& tags)
{
    ffmpeg::silenceLog();
    const QString name = QFileInfo(path).fileName();
    const auto failure = [&name](int code) { return CopyWords::cannotCreate(name, ffmpeg::statusOf(code)); };
    AVFormatContext* made = nullptr;
    const bool isM4a = container == Container::m4a;
    if (const int status = avformat_alloc_output_context2(&made, nullptr, isM4a ? "ipod" : "flac", nullptr);
        status < 0) {
        return failure(status);
    }
    ffmpeg::Output output(made);
    ffmpeg::Packet packet(av_packet_alloc());
    if (!packet || addAudio(*output, codec, sampleRate) == nullptr) {
        return failure(AVERROR(ENOMEM));
    }
    std::optional<PngSize> cover;
    if (isM4a) {
        setTag(&output->metadata, "encoding_tool", u"Vantiro " VANTIRO_VERSION ""_s);
        if (tags) {
            setTags(*output, *tags);
            cover = sizeOfPng(tags->artwork.value_or(QByteArray()));
        }
        if (cover && addCover(*output, *cover) == nullptr) {
            return failure(AVERROR(ENOMEM));
        }
    }
    AVDictionary* options = nullptr;
    // Where the sound begins and ends is told in this unit, and milliseconds would cut within a frame.
    av_dict_set_int(&options, "movie_timescale", sampleRate, 0);
    int status = avio_open(&output->pb, ffmpeg::address(path).constData(), AVIO_FLAG_WRITE);
    if (status >= 0) {
        status = avformat_write_header(output.get(), &options);
    }
    av_dict_free(&options);
    if (status < 0) {
        return failure(status);
    }
    CopyFile file(std::move(output), std::move(packet), name, sampleRate);
    if (cover) {
        if (auto written = file.writeCover(*tags->artwork); !written) {
            return std::unexpected(std::move(written.error()));
        }
    }
    return file;
}

Result<void> CopyFile::write(std::span<std::uint8_t> packet, std::int64_t time, std::int64_t frames)
{
    // The muxer keeps nothing of it.
    m_packet->data = packet.data();
    m_packet->size = static_cast<int>(packet.size());
    m_packet->stream_index = audioStream;
    m_packet->flags = AV_PKT_FLAG_KEY;
    m_packet->pts = time;
    m_packet->dts = time;
    m_packet->duration = frames;
    av_packet_rescale_ts(m_packet.get(), {1, m_sampleRate}, m_output->streams[audioStream]->time_base);
    return send();
}

Result<void> CopyFile::writeStreamInfo(std::span<const std::uint8_t> streamInfo)
{
    m_packet->stream_index = audioStream;
    std::uint8_t* data = av_packet_new_side_data(m_packet.get(), AV_PKT_DATA_NEW_EXTRADATA, streamInfo.size());
    if (data == nullptr) {
        return CopyWords::writeError(ENOMEM);
    }
    std::ranges::copy(streamInfo, data);
    return send();
}

Result<void> CopyFile::writeCover(const QByteArray& png)
{
    if (const int status = av_new_packet(m_packet.get(), static_cast<int>(png.size())); status < 0) {
        return CopyWords::writeError(ffmpeg::statusOf(status));
    }
    std::memcpy(m_packet->data, png.constData(), static_cast<std::size_t>(png.size()));
    m_packet->stream_index = coverStream;
    m_packet->flags = AV_PKT_FLAG_KEY;
    return send();
}

Result<void> CopyFile::send()
{
    const int status = av_write_frame(m_output.get(), m_packet.get());
    av_packet_unref(m_packet.get());
    return status < 0 ? Result<void>(CopyWords::writeError(ffmpeg::statusOf(status))) : Result<void>();
}

Result<void> CopyFile::finish()
{
    int status = av_write_trailer(m_output.get());
    const int closed = avio_closep(&m_output->pb);
    status = status < 0 ? status : closed;
    return status < 0 ? Result<void>(CopyWords::cannotFinish(m_name, ffmpeg::statusOf(status))) : Result<void>();
}

}  // namespace vantiro
