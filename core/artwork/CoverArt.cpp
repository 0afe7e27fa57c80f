// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/artwork/CoverArt.h"

#include "core/foundation/Log.h"

#include <QFile>

namespace vantiro {

std::optional<QByteArray> coverArt()
{
    static const auto cover = []() -> std::optional<QByteArray> {
        QFile file(QStringLiteral(":/artwork/cover.png"));
        if (!file.open(QIODevice::ReadOnly)) {
            logLine(QStringLiteral("The cover of copies could not be read."));
            return std::nullopt;
        }
        return file.readAll();
    }();
    return cover;
}

}  // namespace vantiro
