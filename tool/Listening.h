// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"
#include "core/sources/PreflightFacts.h"
#include "core/sources/SourceProbe.h"

#include <chrono>

namespace vantiro {

class SignalWatch;

/// Hears what there is to record, as the window does before a take. On a terminal a line says so meanwhile. Each call
/// fails with a sentence if PipeWire is not there, or if the user asks the program to stop.
namespace Listening {

    /// Everything that can be recorded, ranked, after listening to it for so long; 0 opens nothing.
    [[nodiscard]] Result<FoundSources> find(
        AudioPlatform& audio, SignalWatch& signals, std::chrono::milliseconds listenFor = SourceProbe::usualTime);

    /// Listens to one source alone. One that is not there has its id for a name, and no peak.
    [[nodiscard]] Result<PreflightFacts::Measured> measure(
        AudioPlatform& audio, SignalWatch& signals, const SourceRef& source);

}  // namespace Listening

}  // namespace vantiro
