// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/MediaLoader.h"

#include "core/copies/CopyWords.h"
#include "core/foundation/Log.h"
#include "platform/media/MediaModule.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// The window's program is installed as bin/NAME, the tool as libexec/vantiro/NAME.
    MediaModule loadModule()
    {
        QStringList failures;
        for (const QString& way : {u"/../"_s, u"/../../"_s}) {
            QLibrary library(QCoreApplication::applicationDirPath() + way + QStringLiteral(VANTIRO_MEDIA_MODULE));
            const auto describe = reinterpret_cast<DescribeMediaModule>(library.resolve(describeMediaModuleName));
            if (describe != nullptr) {
                MediaModule loaded;
                describe(loaded);
                return loaded;
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

    std::unexpected<Error> missing(const QString& path)
    {
        return captureFailure(
            u"%1 cannot be read, since Vantiro's decoders are missing."_s.arg(QFileInfo(path).fileName()));
    }

    Result<std::unique_ptr<TakeReader>> openDecoder(const QString& path)
    {
        const auto open = module().openDecoder;
        return open != nullptr ? open(path) : missing(path);
    }

    Result<std::unique_ptr<CopyEncoder>> openEncoder(const CopyEncoder::Plan& plan)
    {
        const auto open = module().copies.openEncoder;
        return open != nullptr ? open(plan) : CopyWords::cannotConvert(plan.format);
    }

    Result<CopyMedia::Facts> inspect(const QString& path)
    {
        const auto look = module().copies.inspect;
        return look != nullptr ? look(path) : missing(path);
    }

    Result<void> remux(const QString& source, const TakeTags& tags, const QString& target)
    {
        const auto write = module().copies.remux;
        return write != nullptr ? write(source, tags, target) : missing(source);
    }

}  // namespace

void MediaLoader::install()
{
    TakeReader::setDecoder(openDecoder);
    CopyMedia::use({.openEncoder = openEncoder, .inspect = inspect, .remux = remux});
}

Result<QByteArray> MediaLoader::encodePng(int width, int height, std::span<const std::uint8_t> pixels)
{
    const auto encode = module().encodePng;
    return encode != nullptr ? encode(width, height, pixels)
                             : captureFailure(u"No picture can be made, since Vantiro's decoders are missing."_s);
}

}  // namespace vantiro
