// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/TakeReader.h"

#include "core/takes/PcmFile.h"
#include "core/takes/PcmTakeReader.h"

#include <QFileInfo>

#include <atomic>
#include <utility>

namespace vantiro {

namespace {

    std::atomic<TakeReader::DecoderOpener> decoderOpener = nullptr;

}  // namespace

Result<std::unique_ptr<TakeReader>> TakeReader::open(const QString& path)
{
    Result<PcmFile> file = PcmFile::open(path);
    if (!file) {
        return std::unexpected(std::move(file.error()));
    }
    if (!S_ISREG(file->status.st_mode)) {
        // A pipe would be waited for without end.
        return captureFailure(QStringLiteral("%1 is no file with audio.").arg(QFileInfo(path).fileName()));
    }
    if (file->layout) {
        return std::make_unique<PcmTakeReader>(std::move(file->descriptor), *file->layout, path);
    }
    if (const DecoderOpener opener = decoderOpener) {
        return opener(path);
    }
    return captureFailure(QStringLiteral("%1 holds no audio that can be read.").arg(QFileInfo(path).fileName()));
}

void TakeReader::setDecoder(DecoderOpener opener)
{
    decoderOpener = opener;
}

}  // namespace vantiro
