// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/PictureCache.h"

#include <QCache>

#include <mutex>

namespace vantiro {

namespace {

    // Each window may have a thread of its own that paints.
    struct PictureCache {
        std::mutex mutex;
        QCache<QString, Picture> pictures{24 << 10};
    };

    PictureCache& pictureCache()
    {
        static PictureCache cache;
        return cache;
    }

}  // namespace

Picture cachedPicture(const QString& key, const std::function<Picture()>& paint)
{
    PictureCache& cache = pictureCache();
    const std::scoped_lock lock(cache.mutex);
    if (const Picture* kept = cache.pictures.object(key); kept != nullptr) {
        return *kept;
    }
    Picture painted = paint();
    cache.pictures.insert(key, new Picture(painted), 1 + (painted.image.sizeInBytes() >> 10));
    return painted;
}

}  // namespace vantiro
