// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "tool/ShapePicture.h"

#include <QByteArray>
#include <QString>

namespace vantiro::PngFile {

/// The picture as the bytes of a PNG file.
[[nodiscard]] Result<QByteArray> encode(const Picture& picture);

/// Puts the picture at a path, replacing what stands there at once or not at all.
[[nodiscard]] Result<void> write(const Picture& picture, const QString& path);

}  // namespace vantiro::PngFile
