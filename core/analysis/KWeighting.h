// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

namespace vantiro {

/// The weighting filter of ITU-R BS.1770 at any sample rate: a high shelf of two poles, then a high pass whose
/// numerator is 1, -2, 1 and stays so at every rate. Each section computes y[n] = b0 x[n] + b1 x[n-1] + b2 x[n-2] - a1
/// y[n-1] - a2 y[n-2].
struct KWeighting {
    /// Below this rate in Hz the shelf comes too close to half of it and the filter is unstable.
    static constexpr double lowestRate = 4000;

    double b0 = 1;  ///< Of the shelf, as the next four.
    double b1 = 0;
    double b2 = 0;
    double a1 = 0;
    double a2 = 0;
    double passA1 = 0;  ///< Of the high pass.
    double passA2 = 0;

    /// None below the lowest rate, where loudness has no meaning. Any thread.
    [[nodiscard]] static std::optional<KWeighting> atRate(double sampleRate);
};

}  // namespace vantiro
