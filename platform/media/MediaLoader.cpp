// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/MediaLoader.h"

#include "core/foundation/Log.h"
#include "platform/media/MediaModule.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    struct MediaModule {
        OpenDecoder openDecoder = nullptr;
        EncodePng encodePng = nullptr;
    };

    /// The window's program is installed as bin/NAME, the tool as libexec/vantiro/NAME.
    MediaModule loadModule()
    {
        QStringList failures;
        for (const QString& way : {u"/../"_s, u"/../../"_s}) {
            QLibrary library(QCoreApplication::applicationDirPath() + way + QStringLiteral(VANTIRO_MEDIA_MODULE));
            if (library.load()) {
                return {reinterpret_cast<OpenDecoder>(library.resolve(openDecoderName)),
                    reinterpret_cast<EncodePng>(library.resolve(encodePngName))};
            }
            failures << library.errorString();
        }
        logLine(u"no decoders: "_s + failures.join(u"; "_s));
        return {};
    }

    const MediaModule& module()
    {
        static const MediaModule loaded = loadModule();
        return loaded;
    }

}  // namespace

Result<std::unique_ptr<TakeReader>> MediaLoader::open(const QString& path)
{
    if (module().openDecoder == nullptr) {
        return captureFailure(
            u"%1 cannot be read, since Vantiro's decoders are missing."_s.arg(QFileInfo(path).fileName()));
    }
    Result<std::unique_ptr<TakeReader>> result;
    module().openDecoder(path, result);
    return result;
}

Result<QByteArray> MediaLoader::encodePng(int width, int height, std::span<const std::uint8_t> pixels)
{
    if (module().encodePng == nullptr) {
        return captureFailure(u"No picture can be made, since Vantiro's decoders are missing."_s);
    }
    Result<QByteArray> result;
    module().encodePng(width, height, pixels, result);
    return result;
}

}  // namespace vantiro
