// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/Take.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

namespace vantiro {

/// Everything that a list of takes is made of.
struct TakesView {
    QString folder;
    std::vector<Take> takes = {};                         ///< In the order of the list.
    std::optional<QString> recordingPath = std::nullopt;  ///< Of the take among them that is being recorded.
    std::vector<Take> mended = {};                        ///< As they are now.
};

/// The takes for a person, a line each with local times, and their sum; what to do next if there are none.
[[nodiscard]] QStringList takesText(const TakesView& view);

/// {"folder", "takes": in their order, "mended": paths}.
[[nodiscard]] QByteArray takesJson(const TakesView& view);

/// "48,000 Hz".
[[nodiscard]] QString rateText(double sampleRate);
/// "mono", "stereo" or "4 channels".
[[nodiscard]] QString channelsText(std::int64_t channels);
/// "614.4 MB", with a decimal where it tells something.
[[nodiscard]] QString sizeText(std::int64_t bytes);

}  // namespace vantiro
