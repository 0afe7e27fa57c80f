// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qml/SurfacePicture.h"

#include <QString>

#include <functional>

namespace vantiro {

/// The picture that was painted under `key`, or `paint`'s, kept from now on. Keys of one size serve many; the pictures
/// used longest ago go when they take more than 24 MiB together. Any thread.
[[nodiscard]] Picture cachedPicture(const QString& key, const std::function<Picture()>& paint);

}  // namespace vantiro
