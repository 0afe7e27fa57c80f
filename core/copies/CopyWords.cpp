// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyWords.h"

#include <QCoreApplication>

namespace vantiro::CopyWords {

namespace {

    struct CopyTexts {
        Q_DECLARE_TR_FUNCTIONS(CopyWords)
    };

}  // namespace

std::unexpected<Error> overwritesTake()
{
    return captureFailure(CopyTexts::tr("the export would overwrite the take itself. Choose another name or folder."));
}

std::unexpected<Error> stillRecorded(const QString& name)
{
    return captureFailure(CopyTexts::tr("%1 is still being recorded.").arg(name));
}

std::unexpected<Error> cannotOpen(const QString& name)
{
    return captureFailure(CopyTexts::tr("cannot open %1").arg(name));
}

std::unexpected<Error> readError(const QString& name)
{
    return captureFailure(CopyTexts::tr("read error in %1").arg(name));
}

std::unexpected<Error> tooLongForWav()
{
    return captureFailure(
        CopyTexts::tr("this take is longer than a WAV file can hold. Export it as FLAC or Apple Lossless."));
}

std::unexpected<Error> cannotConvert(ExportFormat format)
{
    return captureFailure(CopyTexts::tr("cannot convert to %1 on this Mac").arg(label(format)));
}

std::unexpected<Error> noRoom(const QString& folder)
{
    return captureFailure(
        CopyTexts::tr("there is no room for a copy in %1. Free some space, or choose another folder.").arg(folder));
}

std::unexpected<Error> cannotCreate(const QString& name, int status)
{
    // Both at once: a name may hold a "%2" of its own.
    return captureFailure(CopyTexts::tr("cannot create %1: %2").arg(name, QString::number(status)));
}

std::unexpected<Error> writeError(int status)
{
    return captureFailure(CopyTexts::tr("write error: %1").arg(status));
}

std::unexpected<Error> cannotFinish(const QString& name, int status)
{
    return captureFailure(CopyTexts::tr("cannot finish %1: %2").arg(name, QString::number(status)));
}

std::unexpected<Error> cancelled()
{
    return captureFailure(CopyTexts::tr("The copy was stopped."));
}

}  // namespace vantiro::CopyWords
