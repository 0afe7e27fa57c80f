// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/WavCopy.h"

#include "core/capture/PackedPcm.h"
#include "core/capture/TakeHeader.h"
#include "core/copies/CopyFiles.h"
#include "core/copies/CopyWords.h"
#include "core/foundation/FileDescriptor.h"
#include "core/takes/PcmFile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>
#include <vector>

#include <fcntl.h>

namespace vantiro::WavCopy {

namespace {

    constexpr std::int64_t chunkFrames = 32768;
    /// Of chunks that nobody looks into: the system copies long ones faster.
    constexpr std::int64_t copiedFrames = 32 * chunkFrames;

    /// It is the take that the reader reads, with samples as the copy has them.
    bool holdsThePackedBytes(const PcmFile& take, const TakeReader::Format& format)
    {
        return take.layout && take.layout->sample == PcmLayout::Sample::int24
            && take.layout->order == std::endian::little && take.layout->channels == format.channels
            && take.layout->sampleRate == format.sampleRate && take.layout->frames == format.frames;
    }

    class WavEncoder final : public CopyEncoder {
    public:
        WavEncoder(Plan plan, const TakeShape& shape) : m_plan(std::move(plan)), m_header(shape) { }

        Result<void> encode(
            TakeReader& reader, const QString& file, const Progress& progress, const Cancelled& cancelled) override
        {
            const QString name = QFileInfo(file).fileName();
            m_file = FileDescriptor(
                ::open(QFile::encodeName(file).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
            if (!m_file.isOpen()) {
                return CopyWords::cannotCreate(name, errno);
            }
            auto written = writeAudio(reader, progress, cancelled);
            if (!written) {
                return std::unexpected(std::move(written.error()));
            }
            const bool isPadded = m_header.needsPadding(*written);
            constexpr std::array padding{std::byte{0}};
            int failed = isPadded ? copyFiles::writeAt(m_file.get(), placeOf(*written), padding) : 0;
            m_header.tell(*written, isPadded);
            failed = failed != 0 ? failed : copyFiles::writeAt(m_file.get(), 0, m_header.bytes());
            return failed != 0 ? Result<void>(CopyWords::cannotFinish(name, failed)) : Result<void>();
        }

    private:
        [[nodiscard]] std::int64_t placeOf(std::int64_t frame) const
        {
            return static_cast<std::int64_t>(TakeHeader::size) + frame * m_header.shape().frameBytes();
        }

        /// Returns how many frames it wrote.
        Result<std::int64_t> writeAudio(TakeReader& reader, const Progress& progress, const Cancelled& cancelled)
        {
            Result<PcmFile> take = PcmFile::open(m_plan.source);
            if (take && holdsThePackedBytes(*take, reader.format())) {
                return writeChunks(reader.format().frames, progress, cancelled,
                    [&](std::int64_t first) { return copyChunk(*take, first); });
            }
            const auto samples = static_cast<std::size_t>(chunkFrames * m_plan.channels);
            std::vector<float> planes(samples);
            std::vector<float> frames(samples);
            std::vector<std::byte> packed(samples * packedPcm::sampleBytes);
            return writeChunks(reader.format().frames, progress, cancelled,
                [&](std::int64_t first) { return packChunk(reader, first, planes, frames, packed); });
        }

        /// `writeChunk` writes up to chunkFrames frames from one on and returns how many there were, 0 at the end.
        template <class WriteChunk>
        Result<std::int64_t> writeChunks(
            std::int64_t stated, const Progress& progress, const Cancelled& cancelled, WriteChunk writeChunk)
        {
            std::int64_t done = 0;
            for (;;) {
                if (cancelled()) {
                    return CopyWords::cancelled();
                }
                const Result<std::int64_t> written = writeChunk(done);
                if (!written || *written == 0) {
                    return written ? Result<std::int64_t>(done) : written;
                }
                copyFiles::beginWriteOut(m_file.get(), placeOf(done), *written * m_header.shape().frameBytes());
                done += *written;
                // Some takes tell their length only while they are read.
                if (done * m_header.shape().frameBytes() > maxAudioBytes) {
                    return CopyWords::tooLongForWav();
                }
                if (progress && stated > 0) {
                    progress(std::min(1.0, static_cast<double>(done) / static_cast<double>(stated)));
                }
            }
        }

        Result<std::int64_t> copyChunk(const PcmFile& take, std::int64_t first)
        {
            const std::int64_t frameBytes = take.layout->frameBytes();
            const std::int64_t frames = std::min(copiedFrames, take.layout->frames - first);
            const auto copied = copyFiles::copyBytes(take.descriptor.get(), take.layout->offset + first * frameBytes,
                m_file.get(), placeOf(first), frames * frameBytes);
            if (!copied && copied.error().side == copyFiles::Failure::Side::writing) {
                return CopyWords::writeError(copied.error().number);
            }
            // A take that became shorter meanwhile is no whole copy.
            if (!copied || *copied < frames * frameBytes) {
                return CopyWords::readError(QFileInfo(m_plan.source).fileName());
            }
            return frames;
        }

        Result<std::int64_t> packChunk(TakeReader& reader, std::int64_t first, std::vector<float>& planes,
            std::vector<float>& frames, std::vector<std::byte>& packed)
        {
            const auto channels = static_cast<std::size_t>(m_plan.channels);
            std::vector<float*> plane(channels);
            for (std::size_t channel = 0; channel < channels; ++channel) {
                plane[channel] = planes.data() + channel * static_cast<std::size_t>(chunkFrames);
            }
            const Result<std::int64_t> got = reader.read(first, plane, chunkFrames);
            if (!got) {
                return got;
            }
            const auto count = static_cast<std::size_t>(*got);
            for (std::size_t channel = 0; channel < channels; ++channel) {
                for (std::size_t frame = 0; frame < count; ++frame) {
                    frames[frame * channels + channel] = plane[channel][frame];
                }
            }
            const auto bytes = std::span(packed).first(count * channels * packedPcm::sampleBytes);
            packedPcm::pack(std::span(frames).first(count * channels), bytes);
            const int failed = copyFiles::writeAt(m_file.get(), placeOf(first), bytes);
            return failed != 0 ? Result<std::int64_t>(CopyWords::writeError(failed)) : got;
        }

        Plan m_plan;
        TakeHeader m_header;
        FileDescriptor m_file;
    };

}  // namespace

Result<std::unique_ptr<CopyEncoder>> open(const CopyEncoder::Plan& plan)
{
    const TakeShape shape{TakeFormat::wav, plan.sampleRate, plan.channels};
    if (!shape.isValid()) {
        return CopyWords::cannotConvert(ExportFormat::wav);
    }
    return std::make_unique<WavEncoder>(plan, shape);
}

}  // namespace vantiro::WavCopy
