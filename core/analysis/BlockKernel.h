// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace vantiro {

struct KWeighting;

/// What one plane of a block holds.
struct PlaneLevels {
    double squares = 0;  ///< Sum of the squares of all samples; not finite if one of them is not.
    float peak = 0;      ///< The largest magnitude; samples that are not a number do not count.
};

/// Streams that are filtered side by side: two channels in two stretches of a take.
inline constexpr std::int64_t weighedLanes = 4;

/// The last two samples of each stream before, between and after the two sections, in a scale of the kernel's own; at
/// rest when made.
struct WeightingState {
    double input1[weighedLanes]{};
    double input2[weighedLanes]{};
    double shelf1[weighedLanes]{};
    double shelf2[weighedLanes]{};
    double pass1[weighedLanes]{};
    double pass2[weighedLanes]{};
};

/// The innermost loops of the analysis, built once for each kind of processor. All functions: any thread.
struct BlockKernel {
    /// "baseline" or "avx2".
    const char* name;
    /// The sum does not depend on the kernel: the order follows from the count, and since the square of a 32-bit float
    /// is exact in 64 bits, a fused multiplication changes nothing.
    PlaneLevels (*levels)(const float* samples, std::int64_t frames) noexcept;
    /// The peak alone.
    float (*peak)(const float* samples, std::int64_t frames) noexcept;
    /// Weights `frames` frames of one plane a lane and adds the squares of each to its lane in `energies`. Kernels
    /// agree within rounding. States that have all but died away become zero: arithmetic with denormal numbers takes
    /// many times longer.
    void (*weigh)(const KWeighting& weighting, const float* const* planes, std::int64_t frames, WeightingState& state,
        double* energies) noexcept;

    /// Runs wherever the program runs.
    [[nodiscard]] static const BlockKernel& baseline();
    /// For processors with wider registers; null if this one has none.
    [[nodiscard]] static const BlockKernel* wide();
    /// The fastest one, unless VANTIRO_KERNEL=baseline is in the environment. Looked for once.
    [[nodiscard]] static const BlockKernel& usual();
};

extern const BlockKernel baselineBlockKernel;
extern const BlockKernel avx2BlockKernel;

}  // namespace vantiro
