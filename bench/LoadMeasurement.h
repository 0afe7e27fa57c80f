// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bench/BenchRig.h"
#include "core/foundation/Result.h"

#include <QString>

#include <chrono>
#include <cstdint>

namespace vantiro {

/// What a recorder costs, and what a peer costs that records the same source at the same time.
namespace LoadMeasurement {

    struct Cost {
        std::chrono::nanoseconds processorTime{0};  ///< While it recorded for the wanted span.
        std::chrono::nanoseconds wholeLife{0};      ///< The same with its start and its end.
        std::int64_t privateBytes = 0;              ///< At the end of the span.
    };

    struct Round {
        Cost recorder;
        Cost peer;
    };

    enum class Order {
        recorderFirst,
        peerFirst
    };

    /// What both record.
    enum class Source {
        device,
        program
    };

    /// Records for `span` with the program at `recorder` and with pw-record. Fails if one of them recorded less.
    [[nodiscard]] Result<Round> run(
        const BenchRig& rig, const QString& recorder, std::chrono::seconds span, Source source, Order order);

}  // namespace LoadMeasurement

}  // namespace vantiro
