// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/MixcloudPostName.h"

#include <QLatin1StringView>

namespace vantiro::MixcloudPostName {

QString final(const QString& entered, const QString& defaultName, Listing listing, const QString& suffix)
{
    QString name = entered.trimmed();
    if (!name.isEmpty() && name != defaultName) {
        return name;
    }
    return listing == Listing::unlisted ? defaultName + u' ' + suffix : defaultName;
}

QString randomSuffix(QRandomGenerator& generator)
{
    // Without i, l, o, 0 and 1.
    static constexpr QLatin1StringView characters("abcdefghjkmnpqrstuvwxyz23456789");
    static constexpr int length = 4;
    QString suffix;
    for (int index = 0; index < length; ++index) {
        suffix += characters[generator.bounded(static_cast<int>(characters.size()))];
    }
    return suffix;
}

QString randomSuffix()
{
    return randomSuffix(*QRandomGenerator::system());
}

}  // namespace vantiro::MixcloudPostName
