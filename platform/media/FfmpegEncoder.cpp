// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/FfmpegEncoder.h"

#include "core/copies/CopyWords.h"
#include "platform/media/AacJoint.h"
#include "platform/media/CodecSetup.h"
#include "platform/media/CopySink.h"
#include "platform/media/StretchEncoder.h"

#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <optional>
#include <thread>
#include <utility>

extern "C" {
#include <libavcodec/codec_par.h>
}

namespace vantiro::FfmpegEncoder {

namespace {

    using namespace std::chrono_literals;

    /// How long a stop may take to be noticed, and the progress to move.
    constexpr auto lookEvery = 50ms;
    /// Packets between two looks.
    constexpr std::int64_t batchPackets = 8;

    /// A part of the packets of a take, and what is encoded to get them.
    struct Stretch {
        std::int64_t begin = 0;            ///< The first packet that counts.
        std::int64_t first = 0;            ///< The first that is encoded.
        std::optional<std::int64_t> last;  ///< The one behind the last that is encoded; absent for all up to the end.
    };

    class Encoder final : public CopyEncoder {
    public:
        Encoder(Plan plan, const Cutting& cutting, ffmpeg::Parameters codec)
            : m_plan(std::move(plan))
            , m_cutting(cutting)
            , m_codec(std::move(codec))
        { }

        Result<void> encode(
            TakeReader& reader, const QString& file, const Progress& progress, const Cancelled& cancelled) override;

    private:
        using Stopped = std::function<bool()>;

        [[nodiscard]] bool isAAC() const { return m_plan.format == ExportFormat::aac; }
        [[nodiscard]] int threads() const;
        [[nodiscard]] std::vector<Stretch> cut(const TakeReader& reader) const;
        /// One encoder from the start to the end.
        [[nodiscard]] Result<void> encodeInOne(
            TakeReader& reader, CopySink& sink, const Progress& progress, const Cancelled& cancelled);
        [[nodiscard]] Result<void> encodeSideBySide(TakeReader& reader, const std::vector<Stretch>& stretches,
            CopySink& sink, const Progress& progress, const Cancelled& cancelled);
        /// Any thread. What it is stopped in is incomplete.
        [[nodiscard]] Result<CopyPiece> encodeStretch(
            TakeReader& reader, const Stretch& stretch, const Stopped& isStopped);
        [[nodiscard]] StretchEncoder::Keep keep() const;

        Plan m_plan;
        Cutting m_cutting;
        ffmpeg::Parameters m_codec;  ///< What the encoders are like.
        std::atomic<std::int64_t> m_framesTaken = 0;
    };

    /// Puts the stretches of one take together again.
    class Joiner {
    public:
        using Recode = std::function<Result<CopyPiece>(const Stretch&)>;

        Joiner(CopySink& sink, std::int64_t overlap, Recode recode)
            : m_sink(sink)
            , m_overlap(overlap)
            , m_recode(std::move(recode))
        { }

        /// The next stretch. What stands at its end waits for the one behind.
        [[nodiscard]] Result<void> add(const Stretch& stretch, CopyPiece piece)
        {
            if (stretch.begin > 0) {
                const auto joint =
                    AacJoint::find(m_piece.packets, piece.packets, stretch.begin, stretch.begin + m_overlap);
                if (!joint) {
                    // Both in one, which begins as the one before began, and so brings the same packets up to here.
                    m_stretch.last = stretch.last;
                    auto whole = m_recode(m_stretch);
                    if (!whole) {
                        return std::unexpected(std::move(whole.error()));
                    }
                    m_piece = *std::move(whole);
                    return {};
                }
                if (auto written = m_sink.add(m_piece, m_next, *joint); !written) {
                    return written;
                }
                m_next = *joint;
            }
            m_stretch = stretch;
            m_piece = std::move(piece);
            return {};
        }

        [[nodiscard]] Result<void> finish() { return m_sink.add(m_piece, m_next, m_piece.packets.end()); }

    private:
        CopySink& m_sink;
        std::int64_t m_overlap;
        Recode m_recode;
        Stretch m_stretch;
        CopyPiece m_piece;
        std::int64_t m_next = 0;  ///< The next packet to be written.
    };

    int Encoder::threads() const
    {
        constexpr int most = 16;
        const int wanted =
            m_cutting.threads > 0 ? m_cutting.threads : static_cast<int>(std::thread::hardware_concurrency());
        return std::clamp(wanted, 1, most);
    }

    StretchEncoder::Keep Encoder::keep() const
    {
        return m_plan.format == ExportFormat::flac ? StretchEncoder::Keep::packed : StretchEncoder::Keep::nothing;
    }

    std::vector<Stretch> Encoder::cut(const TakeReader& reader) const
    {
        // Where windows of more than one element would have to agree, one encoder does it all.
        constexpr int mostJoinable = 2;
        const std::int64_t packetFrames = m_codec->frame_size;
        const std::int64_t frames = reader.format().frames + m_codec->initial_padding;
        const std::int64_t packets = (frames + packetFrames - 1) / packetFrames;
        const double seconds = isAAC() ? m_cutting.aacSeconds : m_cutting.losslessSeconds;
        const double length = std::max(seconds * m_plan.sampleRate / static_cast<double>(packetFrames), 1.0);
        const bool canBeCut = reader.isParallel() && threads() > 1 && (!isAAC() || m_plan.channels <= mostJoinable);
        const std::int64_t count = canBeCut ? std::max(std::llround(static_cast<double>(packets) / length), 1LL) : 1;
        std::vector<Stretch> stretches;
        for (std::int64_t number = 0; number < count; ++number) {
            const std::int64_t begin = packets * number / count;
            const std::int64_t end = packets * (number + 1) / count;
            Stretch stretch{.begin = begin, .first = begin, .last = std::nullopt};
            if (isAAC()) {
                stretch.first = std::max(begin - m_cutting.leadIn, std::int64_t{0});
            }
            if (number + 1 < count) {
                stretch.last = end + (isAAC() ? m_cutting.overlap : 0);
            }
            stretches.push_back(stretch);
        }
        return stretches;
    }

    Result<void> Encoder::encode(
        TakeReader& reader, const QString& file, const Progress& progress, const Cancelled& cancelled)
    {
        const auto container =
            m_plan.format == ExportFormat::flac ? CopyFile::Container::flac : CopyFile::Container::m4a;
        auto made = CopyFile::create(file, container, *m_codec, m_codec->sample_rate, m_plan.tags);
        if (!made) {
            return std::unexpected(std::move(made.error()));
        }
        CopySink sink(*std::move(made), *m_codec);
        const std::vector<Stretch> stretches = cut(reader);
        return stretches.size() > 1 ? encodeSideBySide(reader, stretches, sink, progress, cancelled)
                                    : encodeInOne(reader, sink, progress, cancelled);
    }

    Result<void> Encoder::encodeInOne(
        TakeReader& reader, CopySink& sink, const Progress& progress, const Cancelled& cancelled)
    {
        auto encoder = StretchEncoder::open(m_plan, reader, 0, keep());
        if (!encoder) {
            return std::unexpected(std::move(encoder.error()));
        }
        const std::int64_t frames = reader.format().frames;
        std::int64_t done = 0;
        while (!encoder->isAtEnd()) {
            if (cancelled()) {
                return CopyWords::cancelled();
            }
            CopyPiece piece{PacketRun(done)};
            auto encoded = encoder->encode(piece.packets, batchPackets);
            piece.packed = encoder->takePacked();
            done = piece.packets.end();
            if (encoded) {
                encoded = sink.add(piece, piece.packets.first(), done);
            }
            if (!encoded) {
                return encoded;
            }
            if (progress && frames > 0) {
                progress(std::min(static_cast<double>(encoder->framesTaken()) / static_cast<double>(frames), 1.0));
            }
        }
        return sink.finish(encoder->framesTaken());
    }

    Result<CopyPiece> Encoder::encodeStretch(TakeReader& reader, const Stretch& stretch, const Stopped& isStopped)
    {
        auto encoder = StretchEncoder::open(m_plan, reader, stretch.first, keep());
        if (!encoder) {
            return std::unexpected(std::move(encoder.error()));
        }
        CopyPiece piece{PacketRun(stretch.first)};
        const auto left = [&] { return stretch.last ? *stretch.last - piece.packets.end() : batchPackets; };
        while (left() > 0 && !encoder->isAtEnd() && !isStopped()) {
            const std::int64_t before = encoder->framesTaken();
            if (auto encoded = encoder->encode(piece.packets, std::min(left(), batchPackets)); !encoded) {
                return std::unexpected(std::move(encoded.error()));
            }
            m_framesTaken += encoder->framesTaken() - before;
        }
        piece.packed = encoder->takePacked();
        const bool endsEarly = stretch.last && left() > 0 && !isStopped();
        return endsEarly ? Result<CopyPiece>(CopyWords::readError(QFileInfo(m_plan.source).fileName()))
                         : std::move(piece);
    }

    Result<void> Encoder::encodeSideBySide(TakeReader& reader, const std::vector<Stretch>& stretches, CopySink& sink,
        const Progress& progress, const Cancelled& cancelled)
    {
        const std::int64_t frames = reader.format().frames;
        const std::int64_t twice = isAAC() ? m_cutting.leadIn + m_cutting.overlap : 0;
        const std::int64_t work = frames + (std::ssize(stretches) - 1) * twice * m_codec->frame_size;
        Joiner joiner(
            sink, m_cutting.overlap, [&](const Stretch& stretch) { return encodeStretch(reader, stretch, cancelled); });
        PieceQueue queue(std::ssize(stretches), threads(), [&](std::int64_t number, const std::stop_token& stop) {
            return encodeStretch(
                reader, stretches[static_cast<std::size_t>(number)], [&stop] { return stop.stop_requested(); });
        });
        for (const Stretch& stretch : stretches) {
            std::optional<Result<CopyPiece>> piece;
            while (!piece) {
                if (cancelled()) {
                    return CopyWords::cancelled();
                }
                if (progress) {
                    progress(std::min(static_cast<double>(m_framesTaken) / static_cast<double>(work), 1.0));
                }
                piece = queue.next(lookEvery);
            }
            if (!*piece) {
                return std::unexpected(std::move(piece->error()));
            }
            auto added = isAAC() ? joiner.add(stretch, std::move(**piece))
                                 : sink.add(**piece, stretch.begin, (**piece).packets.end());
            if (!added) {
                return added;
            }
        }
        if (auto joined = isAAC() ? joiner.finish() : Result<void>(); !joined) {
            return joined;
        }
        return cancelled() ? Result<void>(CopyWords::cancelled()) : sink.finish(frames);
    }

}  // namespace

Result<std::unique_ptr<CopyEncoder>> open(const CopyEncoder::Plan& plan, const Cutting& cutting)
{
    auto codec = CodecSetup::open(plan);
    if (!codec) {
        return std::unexpected(std::move(codec.error()));
    }
    // Of the encoder itself only the description stays: that of FLAC is seven megabytes.
    ffmpeg::Parameters parameters = ffmpeg::parametersOf(**codec);
    if (!parameters) {
        return CopyWords::writeError(ENOMEM);
    }
    return std::make_unique<Encoder>(plan, cutting, std::move(parameters));
}

Result<std::unique_ptr<CopyEncoder>> open(const CopyEncoder::Plan& plan)
{
    return open(plan, Cutting{});
}

}  // namespace vantiro::FfmpegEncoder
