// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/MediaLoader.h"

#include "core/foundation/Log.h"
#include "platform/media/MediaModule.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>

namespace vantiro {

namespace {

    OpenDecoder loadModule()
    {
        QLibrary module(QCoreApplication::applicationDirPath() + QStringLiteral("/" VANTIRO_MEDIA_MODULE));
        const auto open = reinterpret_cast<OpenDecoder>(module.resolve(openDecoderName));
        if (open == nullptr) {
            logLine(QStringLiteral("no decoders: ") + module.errorString());
        }
        return open;
    }

}  // namespace

Result<std::unique_ptr<TakeReader>> MediaLoader::open(const QString& path)
{
    static const OpenDecoder openDecoder = loadModule();
    if (openDecoder == nullptr) {
        return captureFailure(
            QStringLiteral("%1 cannot be read, since Vantiro's decoders are missing.").arg(QFileInfo(path).fileName()));
    }
    Result<std::unique_ptr<TakeReader>> result;
    openDecoder(path, result);
    return result;
}

}  // namespace vantiro
