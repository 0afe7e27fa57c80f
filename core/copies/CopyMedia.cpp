// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyMedia.h"

#include <QFileInfo>

#include <mutex>

namespace vantiro {

namespace {

    struct MediaInUse {
        std::mutex mutex;
        CopyMedia media;
    };

    MediaInUse& mediaInUse()
    {
        static MediaInUse inUse;
        return inUse;
    }

}  // namespace

void CopyMedia::use(const CopyMedia& media)
{
    const std::lock_guard lock(mediaInUse().mutex);
    mediaInUse().media = media;
}

std::optional<CopyMedia::Facts> CopyMedia::factsOf(const QString& path)
{
    const auto inspect = current().inspect;
    if (!inspect || !QFileInfo(path).isFile()) {
        return std::nullopt;
    }
    const auto facts = inspect(path);
    return facts ? std::optional(*facts) : std::nullopt;
}

CopyMedia CopyMedia::current()
{
    const std::lock_guard lock(mediaInUse().mutex);
    return mediaInUse().media;
}

}  // namespace vantiro
