// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/FfmpegTakeReader.h"

#include "core/takes/PcmFile.h"
#include "platform/media/FfmpegDecoder.h"
#include "platform/media/FfmpegSamples.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <utility>
#include <vector>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/frame.h>
}

namespace vantiro::FfmpegTakeReader {

namespace {

    Error errorOf(const QString& path, int code)
    {
        // FFmpeg's own codes lie far beyond the system's; an invalid argument is how it calls some broken files.
        constexpr int largestNumber = 4095;
        const int number = AVUNERROR(code);
        if (number > 0 && number <= largestNumber && number != EINVAL) {
            return errnoError(path, number);
        }
        return CaptureError{QStringLiteral("%1 holds no audio that can be read.").arg(QFileInfo(path).fileName())};
    }

    class Reader final : public TakeReader {
    public:
        Reader(QString path, FfmpegDecoder decoder, const Format& format, const AVFrame* piece)
            : m_path(std::move(path))
            , m_decoder(std::move(decoder))
            , m_format(format)
            , m_piece(piece)
            , m_marks{{0, m_decoder.packet()}}
        { }

        [[nodiscard]] const Format& format() const override { return m_format; }
        [[nodiscard]] Result<std::int64_t> read(
            std::int64_t first, std::span<float* const> planes, std::int64_t frames) override;
        [[nodiscard]] bool isParallel() const override { return false; }

    private:
        /// A place that was passed: a seek leads to a packet, and only having been there tells which frame that is.
        struct Mark {
            std::int64_t frame = 0;
            FfmpegDecoder::Packet packet;
        };

        [[nodiscard]] std::int64_t end() const { return m_start + (m_piece != nullptr ? m_piece->nb_samples : 0); }
        /// Makes the piece that follows the current one.
        [[nodiscard]] Result<void> advance();
        /// Goes to a piece that begins at a frame or before it.
        [[nodiscard]] Result<void> goBack(std::int64_t frame);
        /// Goes to a mark. False if the seek did not lead there.
        [[nodiscard]] Result<bool> seek(const Mark& before, const Mark& mark);
        [[nodiscard]] Result<void> restart();
        [[nodiscard]] Result<void> setPiece(std::expected<const AVFrame*, int> piece, std::int64_t start);

        QString m_path;
        FfmpegDecoder m_decoder;
        Format m_format;
        const AVFrame* m_piece;     ///< Of m_decoder; null behind the end.
        std::int64_t m_start = 0;   ///< Frame at which the piece begins.
        std::vector<Mark> m_marks;  ///< About one a second, ascending.
    };

    Result<std::int64_t> Reader::read(std::int64_t first, std::span<float* const> planes, std::int64_t frames)
    {
        if (first < 0) {
            return 0;
        }
        if (first < m_start) {
            if (auto there = goBack(first); !there) {
                return std::unexpected(std::move(there.error()));
            }
        }
        std::int64_t done = 0;
        while (done < frames && m_piece != nullptr) {
            const std::int64_t count = std::min(frames - done, end() - first - done);
            if (count > 0) {
                FfmpegSamples::copy(*m_piece, first + done - m_start, planes, done, count);
                done += count;
            } else if (auto next = advance(); !next) {
                return std::unexpected(std::move(next.error()));
            }
        }
        return done;
    }

    Result<void> Reader::setPiece(std::expected<const AVFrame*, int> piece, std::int64_t start)
    {
        m_start = start;
        m_piece = piece.value_or(nullptr);
        if (!piece) {
            return std::unexpected(errorOf(m_path, piece.error()));
        }
        // Audio of another shape may follow in one file, but not in one take.
        if (m_piece != nullptr
            && (m_piece->ch_layout.nb_channels != m_format.channels || m_piece->sample_rate != m_format.sampleRate)) {
            m_piece = nullptr;
        }
        return {};
    }

    Result<void> Reader::advance()
    {
        const FfmpegDecoder::Packet last = m_decoder.packet();
        const std::int64_t start = end();
        auto made = setPiece(m_decoder.next(), start);
        const FfmpegDecoder::Packet& packet = m_decoder.packet();
        const bool isFirstOfPacket = packet.time && packet != last;
        if (m_piece != nullptr && isFirstOfPacket
            && static_cast<double>(start - m_marks.back().frame) >= m_format.sampleRate) {
            m_marks.push_back({start, packet});
        }
        return made;
    }

    Result<void> Reader::goBack(std::int64_t frame)
    {
        const auto after = std::ranges::upper_bound(m_marks, frame, {}, &Mark::frame);
        const auto passed = after - m_marks.begin();
        // Decoding begins a mark early, since what a packet sounds like depends on those before it.
        if (passed >= 3) {
            const auto there = seek(*(after - 2), *(after - 1));
            if (!there) {
                return std::unexpected(there.error());
            }
            if (*there) {
                return {};
            }
        }
        return restart();
    }

    Result<bool> Reader::seek(const Mark& before, const Mark& mark)
    {
        const std::int64_t time = *mark.packet.time;
        const std::int64_t latestStart = time - (time - *before.packet.time) / 2;
        if (!m_decoder.seek(*before.packet.time)) {
            return false;
        }
        for (bool isFirst = true; true; isFirst = false) {
            if (auto made = setPiece(m_decoder.next(), mark.frame); !made) {
                return std::unexpected(std::move(made.error()));
            }
            const FfmpegDecoder::Packet& packet = m_decoder.packet();
            if (m_piece == nullptr || !packet.time || *packet.time > (isFirst ? latestStart : time)) {
                return false;
            }
            if (packet == mark.packet) {
                return true;
            }
        }
    }

    Result<void> Reader::restart()
    {
        auto decoder = FfmpegDecoder::open(m_path);
        if (!decoder) {
            m_piece = nullptr;
            return std::unexpected(errorOf(m_path, decoder.error()));
        }
        m_decoder = std::move(*decoder);
        return setPiece(m_decoder.next(), 0);
    }

    double secondsIn(const FfmpegDecoder& decoder, const QString& path)
    {
        // What a damaged file tells still fits a count of frames.
        constexpr double farthest = 1e9;
        if (const auto stated = decoder.statedSeconds()) {
            return std::min(*stated, farthest);
        }
        auto counting = FfmpegDecoder::open(path);
        return counting ? counting->skipToEnd() : 0;
    }

}  // namespace

Result<std::unique_ptr<TakeReader>> open(const QString& path)
{
    auto decoder = FfmpegDecoder::open(path);
    if (!decoder) {
        return std::unexpected(errorOf(path, decoder.error()));
    }
    const auto piece = decoder->next();
    // What a header tells of rate and channels is not always what comes out.
    if (!piece || *piece == nullptr || !PcmLayout::isPossible((*piece)->sample_rate, (*piece)->ch_layout.nb_channels)) {
        return std::unexpected(errorOf(path, piece ? AVERROR_INVALIDDATA : piece.error()));
    }
    const int rate = (*piece)->sample_rate;
    const TakeReader::Format format{
        static_cast<double>(rate), (*piece)->ch_layout.nb_channels, std::llround(secondsIn(*decoder, path) * rate)};
    return std::make_unique<Reader>(path, std::move(*decoder), format, *piece);
}

}  // namespace vantiro::FfmpegTakeReader
