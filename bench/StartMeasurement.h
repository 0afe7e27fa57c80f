// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bench/BenchRig.h"
#include "core/foundation/Result.h"

#include <QString>

#include <chrono>
#include <vector>

namespace vantiro {

/// How long it takes from the wish to record until there is a recording.
namespace StartMeasurement {

    struct Start {
        std::chrono::nanoseconds returned{0};    ///< Until the client knows that the take runs.
        std::chrono::nanoseconds firstFrame{0};  ///< Until the device played what the take begins with.
    };

    /// Starts the detached recorder `count` times, one after the other, each on a device that was at rest.
    [[nodiscard]] Result<std::vector<Start>> run(const BenchRig& rig, const QString& recorder, int count);

}  // namespace StartMeasurement

}  // namespace vantiro
