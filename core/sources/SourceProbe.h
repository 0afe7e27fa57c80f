// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"
#include "core/sources/SourceMemory.h"
#include "core/sources/SourceRanker.h"

#include <QStringList>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace vantiro {

/// What can be recorded, in the order of how likely it carries the mix.
struct FoundSources {
    std::vector<AudioDevice> devices;  ///< The input devices that were there.
    std::vector<RankedSource> sources;
    std::optional<SourceRef> remembered;  ///< What the user chose with these devices connected; it may be absent now.

    /// The UIDs of the devices: the set of hardware that a choice belongs to.
    [[nodiscard]] QStringList uids() const;
    /// The remembered source, if it is there.
    [[nodiscard]] std::optional<SourceRef> rememberedPick() const;
    /// The remembered source, if it is there, else the automatic pick.
    [[nodiscard]] std::optional<SourceRef> pick() const;
};

/// Listens to everything that could carry the mix, all at once.
namespace SourceProbe {

    inline constexpr std::chrono::milliseconds usualTime{1'500};

    struct Options {
        QStringList djApps = {};                          ///< Prefixes, as of KnownDJApps.
        std::chrono::milliseconds listenFor = usualTime;  ///< 0 opens nothing.
        std::function<bool()> cancelled = {};             ///< Asked on several threads while it listens; ends it early.
    };

    /// One observation a device, then one a known DJ program. Bluetooth, Continuity and AirPlay devices are never
    /// opened, since that changes their sound; a device that cannot be opened has no peak. A program's level is not
    /// measured, but one that sends nothing but digital silence is not playing. Blocks for the given time and little
    /// more. Any thread but the main one.
    [[nodiscard]] std::vector<SourceObservation> observe(
        AudioPlatform& audio, const std::vector<AudioDevice>& devices, const Options& options);

    /// Lists the devices, observes them and ranks what was heard. Blocks as observe() does.
    [[nodiscard]] FoundSources find(AudioPlatform& audio, const SourceMemory& memory, const Options& options);

}  // namespace SourceProbe

}  // namespace vantiro
