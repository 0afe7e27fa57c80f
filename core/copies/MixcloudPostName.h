// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRandomGenerator>
#include <QString>

/// How a post to Mixcloud is called. Any thread.
namespace vantiro::MixcloudPostName {

enum class Listing {
    listed,
    unlisted,
};

/// The user's own name, trimmed, as it stands. Where nothing was entered, or just the default, that is the default; an
/// unlisted post then gets a blank and the suffix behind it, so that two of a day do not collide.
[[nodiscard]] QString final(const QString& entered, const QString& defaultName, Listing listing, const QString& suffix);

/// Four characters that nobody takes for others, each drawn evenly and by itself.
[[nodiscard]] QString randomSuffix(QRandomGenerator& generator);
/// The same from the system's own source of chance.
[[nodiscard]] QString randomSuffix();

}  // namespace vantiro::MixcloudPostName
