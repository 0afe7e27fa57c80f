// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/Framer.h"
#include "core/analysis/KWeighting.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vantiro {

/// Integrated loudness in LUFS as in ITU-R BS.1770 and EBU R128, of `steps`: one power for each 100 ms, the mean of the
/// squares of the weighted samples, summed over the channels. Absent if there are fewer than four steps, or if nothing
/// is louder than -70 LUFS. Any thread.
[[nodiscard]] std::optional<double> integratedLoudness(std::span<const double> steps);

/// Frames in a step of 100 ms, at least 1.
[[nodiscard]] std::int64_t loudnessStepFrames(double sampleRate);

/// Loudness by its plain definition, chunk by chunk in order and whatever their size: what a faster measurement has to
/// agree with. Every channel weighs the same. The last fraction of a step does not count.
class LoudnessMeter {
public:
    /// None for a rate below KWeighting::lowestRate or without channels.
    [[nodiscard]] static std::optional<LoudnessMeter> make(double sampleRate, std::int64_t channels);

    /// `planes` is one pointer a channel.
    void add(std::span<const float* const> planes, std::int64_t frames);
    /// In LUFS, of the steps so far.
    [[nodiscard]] std::optional<double> integrated() const { return integratedLoudness(m_steps); }
    [[nodiscard]] const std::vector<double>& steps() const { return m_steps; }

private:
    /// The last two samples before, between and after the sections.
    struct Filter {
        double input[2]{};
        double shelf[2]{};
        double pass[2]{};

        double weighted(const KWeighting& weighting, double sample);
    };

    LoudnessMeter(const KWeighting& weighting, std::int64_t stepFrames, std::int64_t channels)
        : m_weighting(weighting)
        , m_framer(stepFrames)
        , m_filters(static_cast<std::size_t>(channels))
    { }

    KWeighting m_weighting;
    Framer m_framer;
    std::vector<Filter> m_filters;
    double m_stepSum = 0;
    std::vector<double> m_steps;
};

}  // namespace vantiro
