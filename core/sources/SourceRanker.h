// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/sources/SourceObservation.h"

#include <QStringList>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vantiro {

/// A source, how likely it carries the mix, and why.
struct RankedSource {
    SourceObservation observation;
    std::int64_t score = 0;    ///< Higher is better.
    QStringList reasons = {};  ///< Short phrases for the user, in the order in which they were earned.

    bool operator==(const RankedSource&) const = default;
};

/// Finds the source that carries the mix. The scores are a ladder: what the user chose before (100 more) beats
/// everything, a real stereo interface with a signal (90) beats a DJ program that plays (65), and that beats an
/// interface in silence (50). Any thread.
namespace SourceRanker {

    /// At least so loud, something is heard: a virtual device carries a mix, a microphone hears a room. In dB.
    inline constexpr float heardDB = -40;

    /// The observations by falling score, equal scores by name. What scores nothing is left out, but for the
    /// remembered source.
    [[nodiscard]] std::vector<RankedSource> rank(
        std::span<const SourceObservation> observations, const std::optional<SourceRef>& remembered);

    /// The first that may be picked without asking: a known DJ program, or a device that is neither a microphone nor a
    /// timecode input and, if it is virtual, carries a signal.
    [[nodiscard]] std::optional<RankedSource> automaticPick(std::span<const RankedSource> ranked);

    /// The names of the devices among them, for a user who has to choose.
    [[nodiscard]] QStringList deviceNames(std::span<const RankedSource> ranked);

}  // namespace SourceRanker

}  // namespace vantiro
