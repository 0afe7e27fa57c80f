// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/TakeFormat.h"
#include "core/foundation/Result.h"
#include "core/platform/AudioPlatform.h"
#include "core/sources/SourceRanker.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace vantiro {

class SignalWatch;

/// What a take is made of that is asked for without saying so.
namespace TakePlan {

    /// The source that carries the mix, as the window would pick it. Listens; fails with a sentence, also while a take
    /// runs.
    [[nodiscard]] Result<RankedSource> findSource(AudioPlatform& audio, SignalWatch& signals);

    /// The pair of channels that the user set for this source in the window.
    [[nodiscard]] std::optional<std::vector<std::int64_t>> chosenChannels(
        AudioPlatform& audio, const SourceRef& source);

    /// A new take's file in the takes folder. A disk that is not there is told, not made up for with a folder in its
    /// place.
    [[nodiscard]] Result<QString> pathInTakesFolder(TakeFormat format);

}  // namespace TakePlan

}  // namespace vantiro
