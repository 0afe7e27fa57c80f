// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/TakeAnalysis.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vantiro {

/// The levels of a take in blocks of 10 ms, and what its moments are found from. Immutable; any thread.
class BlockLevels {
public:
    /// A step is 100 ms.
    static constexpr std::int64_t blocksOfStep = 10;

    /// `power` is the mean square of each block, `peak` its largest magnitude; both are as long as each other. A power
    /// that is not finite counts as 0, a peak that is not a number too.
    BlockLevels(std::vector<double> power, std::vector<float> peak, double blockSeconds, double totalSeconds);

    [[nodiscard]] const std::vector<double>& power() const { return m_power; }
    [[nodiscard]] const std::vector<float>& peak() const { return m_peak; }
    /// Moving mean of the power over 41 blocks around each block, fewer at the ends.
    [[nodiscard]] const std::vector<double>& smooth() const { return m_smooth; }
    [[nodiscard]] double blockSeconds() const { return m_blockSeconds; }
    [[nodiscard]] double totalSeconds() const { return m_totalSeconds; }

    /// The block border nearest to a time in seconds.
    [[nodiscard]] std::int64_t blockIndex(double seconds) const;
    /// Mean power of the blocks from `from` up to but not including `to`; absent if there are none.
    [[nodiscard]] std::optional<double> meanPower(std::int64_t from, std::int64_t to) const;
    /// A power in dB, at least -120.
    [[nodiscard]] static float levelDB(double power);
    /// The highest peak between two times in seconds, in dB, at least -120.
    [[nodiscard]] float peakDB(double from, double to) const;
    /// The level a moment ago, for each step: the median of the steps before it, within `context`
    /// seconds; absent while there are too few.
    [[nodiscard]] std::vector<std::optional<double>> baseline(double context) const;
    /// Median power of the steps that hold the blocks from `from` up to but not including `to`; absent if there are
    /// none.
    [[nodiscard]] std::optional<double> medianPower(std::int64_t from, std::int64_t to) const;

    /// Level of each second in dB: the mean, and the peak.
    [[nodiscard]] std::vector<float> rmsPerSecond() const;
    [[nodiscard]] std::vector<float> peakPerSecond() const;

    [[nodiscard]] std::vector<TakeAnalysis::Run> findSilences(const TakeAnalysis::Options& options) const;
    /// All moments, in order of time: clips, silences, drops and jumps.
    [[nodiscard]] std::vector<TakeAnalysis::Moment> findMoments(std::span<const TakeAnalysis::Run> clips,
        std::span<const TakeAnalysis::Run> silences, const TakeAnalysis::Options& options) const;

private:
    std::vector<double> m_power;
    std::vector<float> m_peak;
    double m_blockSeconds;
    double m_totalSeconds;
    std::vector<double> m_sums;  ///< Prefix sums of the power, one longer.
    std::vector<double> m_smooth;
    std::vector<double> m_steps;  ///< Mean power of each step.
};

}  // namespace vantiro
