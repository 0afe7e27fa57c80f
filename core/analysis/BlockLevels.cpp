// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/BlockLevels.h"

#include "core/analysis/Median.h"
#include "core/foundation/Decibels.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantiro {

namespace {

    constexpr std::int64_t smoothBefore = 20;  ///< Blocks before the middle one of a moving mean.
    constexpr std::int64_t smoothAfter = 21;   ///< The middle one and those after it.

    /// The values from `from` up to but not including `to`.
    std::vector<double> part(const std::vector<double>& values, std::int64_t from, std::int64_t to)
    {
        return {values.begin() + from, values.begin() + to};
    }

    float highestDB(std::span<const float> peaks)
    {
        float highest = 0;
        for (const float peak : peaks) {
            highest = std::max(highest, peak);
        }
        return std::max(decibels(highest), silenceDB);
    }

    std::int64_t blocksOfSecond(double blockSeconds)
    {
        return std::max<std::int64_t>(std::llround(1 / blockSeconds), 1);
    }

}  // namespace

BlockLevels::BlockLevels(std::vector<double> power, std::vector<float> peak, double blockSeconds, double totalSeconds)
    : m_power(std::move(power))
    , m_peak(std::move(peak))
    , m_blockSeconds(blockSeconds)
    , m_totalSeconds(totalSeconds)
{
    // A single broken sample would spoil every sum after it.
    std::ranges::replace_if(m_power, [](double value) { return !std::isfinite(value); }, 0.0);
    std::ranges::replace_if(m_peak, [](float value) { return std::isnan(value); }, 0.0F);

    const std::int64_t count = std::ssize(m_power);
    m_sums.reserve(m_power.size() + 1);
    m_sums.push_back(0);
    for (const double value : m_power) {
        m_sums.push_back(m_sums.back() + value);
    }
    m_smooth.reserve(m_power.size());
    for (std::int64_t block = 0; block < count; ++block) {
        m_smooth.push_back(meanPower(block - smoothBefore, block + smoothAfter).value_or(0));
    }
    for (std::int64_t block = 0; block < count; block += blocksOfStep) {
        m_steps.push_back(meanPower(block, block + blocksOfStep).value_or(0));
    }
}

std::int64_t BlockLevels::blockIndex(double seconds) const
{
    const double nearest = std::round(seconds / m_blockSeconds);
    return static_cast<std::int64_t>(std::clamp(nearest, 0.0, static_cast<double>(m_power.size())));
}

std::optional<double> BlockLevels::meanPower(std::int64_t from, std::int64_t to) const
{
    const std::int64_t first = std::max<std::int64_t>(from, 0);
    const std::int64_t last = std::min(to, std::ssize(m_power));
    if (last <= first) {
        return std::nullopt;
    }
    const double sum = m_sums[static_cast<std::size_t>(last)] - m_sums[static_cast<std::size_t>(first)];
    return sum / static_cast<double>(last - first);
}

float BlockLevels::levelDB(double power)
{
    return std::max(static_cast<float>(10 * std::log10(std::max(power, 1e-30))), silenceDB);
}

float BlockLevels::peakDB(double from, double to) const
{
    const std::int64_t first = blockIndex(from);
    const std::int64_t last = std::min(std::max(first + 1, blockIndex(to)), std::ssize(m_peak));
    return highestDB(std::span(m_peak.begin() + first, m_peak.begin() + std::max(first, last)));
}

std::vector<std::optional<double>> BlockLevels::baseline(double context) const
{
    const double stepSeconds = m_blockSeconds * static_cast<double>(blocksOfStep);
    const std::int64_t window = std::max<std::int64_t>(std::llround(context / stepSeconds), 1);
    std::vector<std::optional<double>> levels(m_steps.size());
    for (std::int64_t step = 1; step < std::ssize(m_steps); ++step) {
        const std::int64_t first = std::max<std::int64_t>(step - window, 0);
        if (step - first >= window / 3) {
            levels[static_cast<std::size_t>(step)] = upperMedian(part(m_steps, first, step));
        }
    }
    return levels;
}

std::optional<double> BlockLevels::medianPower(std::int64_t from, std::int64_t to) const
{
    const std::int64_t first = from / blocksOfStep;
    const std::int64_t last = std::min(std::max(to / blocksOfStep, first + 1), std::ssize(m_steps));
    if (last <= first) {
        return meanPower(from, to);
    }
    return upperMedian(part(m_steps, first, last));
}

std::vector<float> BlockLevels::rmsPerSecond() const
{
    const std::int64_t blocks = blocksOfSecond(m_blockSeconds);
    std::vector<float> levels;
    for (std::int64_t block = 0; block < std::ssize(m_power); block += blocks) {
        levels.push_back(levelDB(meanPower(block, block + blocks).value_or(0)));
    }
    return levels;
}

std::vector<float> BlockLevels::peakPerSecond() const
{
    const std::int64_t blocks = blocksOfSecond(m_blockSeconds);
    const std::int64_t count = std::ssize(m_peak);
    std::vector<float> levels;
    for (std::int64_t block = 0; block < count; block += blocks) {
        levels.push_back(
            highestDB(std::span(m_peak.begin() + block, m_peak.begin() + std::min(block + blocks, count))));
    }
    return levels;
}

}  // namespace vantiro
