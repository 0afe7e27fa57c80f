// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/SourceCapture.h"

namespace vantiro {

Result<std::unique_ptr<SourceCapture>> SourceCapture::open(
    const Options& options, AudioPlatform& audio, TakeStorage& storage)
{
    if (options.source.kind == SourceRef::Kind::app) {
        return captureFailure(QStringLiteral("%1 is not running").arg(options.source.id));
    }
    auto capture = Capture::open({.deviceUID = options.source.id,
                                     .channels = options.channels,
                                     .filePath = options.filePath,
                                     .format = options.format},
        audio, storage);
    if (!capture) {
        return std::unexpected(capture.error());
    }
    return std::unique_ptr<SourceCapture>(new SourceCapture(*std::move(capture)));
}

SourceCapture::SourceCapture(std::unique_ptr<Capture> capture)
    : m_capture(std::move(capture))
    , m_name(m_capture->device().name)
{ }

CaptureStats SourceCapture::stop()
{
    return m_capture->stop();
}

}  // namespace vantiro
