// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPlatform.h"
#include "core/sources/SourceProbe.h"

#include <QByteArray>
#include <QStringList>

#include <optional>
#include <vector>

namespace vantiro {

/// Everything that a list of sources is made of.
struct SourcesView {
    FoundSources found;
    std::vector<AudioProcess> programs;
    std::optional<QString> defaultInputUID;

    /// What was found, and what the audio system says besides.
    [[nodiscard]] static SourcesView of(FoundSources found, AudioPlatform& audio);
};

/// The sources for a person, in their order, with the one that a take would record marked; then the programs that are
/// no known DJ apps. What to do next, if there is nothing.
[[nodiscard]] QStringList sourcesText(const SourcesView& view);

/// {"devices", "programs", "sources": in their order, "pick": descriptor or null}.
[[nodiscard]] QByteArray sourcesJson(const SourcesView& view);

/// Why a source has its place, in one line.
[[nodiscard]] QString reasonsText(const RankedSource& source);

}  // namespace vantiro
