// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/TakeExporter.h"

#include "core/copies/CopyFolder.h"
#include "core/copies/CopyJournal.h"
#include "core/copies/CopyMedia.h"
#include "core/copies/CopyWords.h"
#include "core/copies/TemporaryFile.h"
#include "core/copies/WavCopy.h"
#include "core/foundation/FileDescriptor.h"
#include "core/foundation/Files.h"
#include "core/foundation/Log.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/takes/PcmFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace vantiro::TakeExporter {

namespace {

    using Stage = CopyFailure::Stage;

    struct ExportWords {
        Q_DECLARE_TR_FUNCTIONS(TakeExporter)
    };

    /// A take under the words of a copy. Linear PCM that gives less than it had when it was opened has been cut, and a
    /// copy of the rest would pass for the whole.
    class SourceReader final : public TakeReader {
    public:
        /// `slack` is how many frames may be missing at the end.
        SourceReader(std::unique_ptr<TakeReader> reader, QString name, std::int64_t slack)
            : m_reader(std::move(reader))
            , m_name(std::move(name))
            , m_slack(slack)
        { }

        [[nodiscard]] const Format& format() const override { return m_reader->format(); }
        [[nodiscard]] bool isParallel() const override { return m_reader->isParallel(); }
        Result<std::int64_t> read(std::int64_t first, std::span<float* const> planes, std::int64_t frames) override
        {
            Result<std::int64_t> got = m_reader->read(first, planes, frames);
            if (!got || *got < std::min(frames, format().frames - m_slack - first)) {
                return CopyWords::readError(m_name);
            }
            return got;
        }

    private:
        std::unique_ptr<TakeReader> m_reader;
        QString m_name;
        std::int64_t m_slack;
    };

    Result<std::unique_ptr<SourceReader>> openSource(const QString& path)
    {
        const QString name = QFileInfo(path).fileName();
        Result<std::unique_ptr<TakeReader>> reader = TakeReader::open(path);
        const Result<PcmFile> pcm = PcmFile::open(path);
        if (!reader || !pcm) {
            return CopyWords::cannotOpen(name);
        }
        // What only decoding can tell is known about so exactly.
        const std::int64_t slack = pcm->layout ? 0 : std::llround((*reader)->format().sampleRate);
        return std::make_unique<SourceReader>(*std::move(reader), name, slack);
    }

    /// Brings the finished copy to the disk.
    Result<void> syncCopy(const QString& file)
    {
        const FileDescriptor descriptor(::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC));
        if (!descriptor.isOpen() || ::fsync(descriptor.get()) != 0) {
            return CopyWords::cannotFinish(QFileInfo(file).fileName(), errno);
        }
        return {};
    }

    Result<void> arrive(const QString& file, const QString& destination)
    {
        if (::rename(QFile::encodeName(file).constData(), QFile::encodeName(destination).constData()) != 0) {
            return std::unexpected(errnoError(destination, errno));
        }
        // It is there for everybody to see; what is in doubt is only whether a power cut would take it back.
        if (const auto synced = files::syncParentFolder(destination); !synced) {
            logLine(errorText(synced.error()));
        }
        return {};
    }

    bool isTooLongForWav(const TakeReader::Format& take)
    {
        return take.frames > WavCopy::maxAudioBytes / (std::int64_t{3} * take.channels);
    }

    /// All but the guard and the source.
    CopyOutcome makeCopy(SourceReader& source, const Request& request, const CopyRoom::Surroundings& surroundings)
    {
        const TakeReader::Format& take = source.format();
        const QString destination = QFileInfo(request.destination).absoluteFilePath();
        if (request.format == ExportFormat::wav && isTooLongForWav(take)) {
            return copyFailure(Stage::refused, CopyWords::tooLongForWav());
        }
        Result<std::unique_ptr<CopyEncoder>> encoder =
            CopyEncoder::open({request.format, request.source, take.sampleRate, take.channels, request.tags});
        if (!encoder) {
            return copyFailure(Stage::refused, std::unexpected(std::move(encoder.error())));
        }
        const auto volume = [&] { return surroundings.volume(destination); };
        const auto noRoom = [&] { return CopyWords::noRoom(QFileInfo(destination).path()); };
        if (!CopyRoom::fits(CopyRoom::bytes(request.format, take), volume())) {
            return copyFailure(Stage::refused, noRoom());
        }
        Result<CopyFolder> folder = CopyFolder::beside(destination);
        if (!folder) {
            return copyFailure(Stage::failed, std::unexpected(std::move(folder.error())));
        }
        const QString file = QDir(folder->path()).filePath(QFileInfo(destination).fileName());
        CopyRoomWatch watch(volume, surroundings.now);
        const auto isCancelled = [&] { return watch.isShort() || (request.cancelled && request.cancelled()); };
        Result<void> made = (*encoder)->encode(source, file, request.progress, isCancelled);
        // It closes its file: some network volumes cannot remove a folder with an open file in it.
        encoder->reset();
        if (made) {
            made = syncCopy(file);
        }
        if (watch.isShort()) {
            return copyFailure(Stage::failed, noRoom());
        }
        if (request.cancelled && request.cancelled()) {
            return copyFailure(Stage::cancelled, CopyWords::cancelled());
        }
        if (made) {
            made = arrive(file, destination);
        }
        return made ? CopyOutcome() : copyFailure(Stage::failed, std::unexpected(std::move(made.error())));
    }

}  // namespace

QString suggestedName(const QString& source, ExportFormat format)
{
    const QFileInfo take(source);
    const QString extension = fileExtension(format);
    const QString addition = take.suffix().toLower() == extension ? QStringLiteral(" export") : QString();
    return take.completeBaseName() + addition + u'.' + extension;
}

bool isAAC(const QString& path)
{
    const auto facts = CopyMedia::factsOf(path);
    return facts && facts->isAAC;
}

Result<void> writeTags(const TakeTags& tags, const QString& file, const CopyRoom::Surroundings& surroundings)
{
    const auto remux = CopyMedia::current().remux;
    // A link stays what it is.
    const QFileInfo target(QFileInfo(file).canonicalFilePath());
    if (!remux || !target.isFile()) {
        return std::unexpected(LibraryError{ExportWords::tr("cannot tag %1").arg(QFileInfo(file).fileName())});
    }
    const TemporaryFile tagged(target.path() + u'/' + CopyJournal::taggingPrefix, QStringLiteral(".m4a"));
    if (!CopyRoom::fits(target.size(), surroundings.volume(tagged.path()))) {
        return CopyWords::noRoom(target.path());
    }
    Result<void> written = remux(target.filePath(), tags, tagged.path());
    if (written) {
        written = syncCopy(tagged.path());
    }
    return written ? arrive(tagged.path(), target.filePath()) : written;
}

CopyOutcome exportTake(const Request& request, const CopyRoom::Surroundings& surroundings)
{
    if (const auto running = RecorderStateStore::running()) {
        for (const QString& path : {request.source, request.destination}) {
            if (files::isSame(path, running->path)) {
                return copyFailure(Stage::refused, CopyWords::stillRecorded(QFileInfo(path).fileName()));
            }
        }
    }
    if (files::isSame(request.source, request.destination)) {
        return copyFailure(Stage::refused, CopyWords::overwritesTake());
    }
    if (QFileInfo(request.destination).isDir()) {
        // Told before the work, not after it.
        return copyFailure(Stage::refused, std::unexpected(errnoError(request.destination, EISDIR)));
    }
    const Result<std::unique_ptr<SourceReader>> source = openSource(request.source);
    return source ? makeCopy(**source, request, surroundings)
                  : copyFailure(Stage::refused, std::unexpected(source.error()));
}

}  // namespace vantiro::TakeExporter
