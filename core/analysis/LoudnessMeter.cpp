// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/LoudnessMeter.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    /// -70 LUFS as a power: 10^((-70 + 0.691) / 10).
    constexpr double absoluteGate = 1.1724653045822981e-7;
    constexpr double relativeGate = 0.1;
    constexpr double offsetDB = -0.691;
    constexpr std::size_t stepsPerBlock = 4;

    /// The mean of those blocks of 400 ms that are `kept`.
    template <class Kept>
    std::optional<double> meanOfBlocks(std::span<const double> steps, const Kept& kept)
    {
        double sum = 0;
        std::int64_t count = 0;
        for (std::size_t step = 0; step + stepsPerBlock <= steps.size(); ++step) {
            const double block = (steps[step] + steps[step + 1] + steps[step + 2] + steps[step + 3]) / stepsPerBlock;
            if (kept(block)) {
                sum += block;
                ++count;
            }
        }
        return count > 0 ? std::optional(sum / static_cast<double>(count)) : std::nullopt;
    }

}  // namespace

std::optional<double> integratedLoudness(std::span<const double> steps)
{
    // The first gate admits what lies on it, the second does not.
    const auto passes = [](double block) { return block >= absoluteGate; };
    const std::optional<double> ungated = meanOfBlocks(steps, passes);
    if (!ungated) {
        return std::nullopt;
    }
    const double gate = *ungated * relativeGate;
    const std::optional<double> mean = meanOfBlocks(steps, [&](double block) { return passes(block) && block > gate; });
    return mean ? std::optional(10 * std::log10(*mean) + offsetDB) : std::nullopt;
}

std::int64_t loudnessStepFrames(double sampleRate)
{
    return std::max<std::int64_t>(1, std::llround(sampleRate / 10));
}

std::optional<LoudnessMeter> LoudnessMeter::make(double sampleRate, std::int64_t channels)
{
    const std::optional<KWeighting> weighting = KWeighting::atRate(sampleRate);
    if (!weighting || channels < 1) {
        return std::nullopt;
    }
    return LoudnessMeter(*weighting, loudnessStepFrames(sampleRate), channels);
}

double LoudnessMeter::Filter::weighted(const KWeighting& by, double sample)
{
    const double afterShelf =
        by.b0 * sample + by.b1 * input[0] + by.b2 * input[1] - by.a1 * shelf[0] - by.a2 * shelf[1];
    const double afterPass = afterShelf - 2 * shelf[0] + shelf[1] - by.passA1 * pass[0] - by.passA2 * pass[1];
    input[1] = input[0];
    input[0] = sample;
    shelf[1] = shelf[0];
    shelf[0] = afterShelf;
    pass[1] = pass[0];
    pass[0] = afterPass;
    return afterPass;
}

void LoudnessMeter::add(std::span<const float* const> planes, std::int64_t frames)
{
    for (const Framer::Chunk& chunk : m_framer.advance(frames)) {
        for (std::size_t channel = 0; channel < m_filters.size(); ++channel) {
            double squares = 0;
            for (std::int64_t frame = chunk.offset; frame < chunk.offset + chunk.count; ++frame) {
                const double sample =
                    m_filters[channel].weighted(m_weighting, static_cast<double>(planes[channel][frame]));
                squares += sample * sample;
            }
            m_stepSum += squares / static_cast<double>(m_framer.period());
        }
        if (chunk.closes) {
            m_steps.push_back(m_stepSum);
            m_stepSum = 0;
        }
    }
}

}  // namespace vantiro
