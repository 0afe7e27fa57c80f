// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/RampSignal.h"

namespace vantiro::RampSignal {

namespace {

    constexpr std::uint32_t mask = (1U << 24) - 1;
    // Odd, hence invertible modulo 2^24: every frame of a period has its own value. Its bits are mixed, so that a
    // sample off by one bit or shifted by a byte looks like a jump of many frames.
    constexpr std::uint32_t step = 0x5DEECD;
    constexpr std::uint32_t channelStep = 7919;

    // Newton's iteration doubles the correct low bits each time; an odd number is its own inverse in the low three.
    constexpr std::uint32_t inverse(std::uint32_t odd)
    {
        std::uint32_t result = odd;
        for (int round = 0; round < 4; ++round) {
            result *= 2 - odd * result;
        }
        return result & mask;
    }
    constexpr std::uint32_t inverseStep = inverse(step);
    static_assert(((step * inverseStep) & mask) == 1);

    std::int64_t frameOf(std::int32_t sample, int channel) noexcept
    {
        const auto raw = static_cast<std::uint32_t>(sample) + (1U << 23);
        return ((raw - static_cast<std::uint32_t>(channel) * channelStep) * inverseStep) & mask;
    }

    // The shortest way from one frame to another on the circle of 2^24.
    std::int64_t distance(std::int64_t from, std::int64_t to) noexcept
    {
        const auto forward = static_cast<std::int64_t>(static_cast<std::uint64_t>(to - from) & mask);
        return forward > static_cast<std::int64_t>(mask / 2) ? forward - (1 << 24) : forward;
    }

}  // namespace

std::int32_t sample(int channel, std::int64_t frame) noexcept
{
    const std::uint32_t raw =
        static_cast<std::uint32_t>(frame) * step + static_cast<std::uint32_t>(channel) * channelStep;
    return static_cast<std::int32_t>(raw & mask) - (1 << 23);
}

float value(int channel, std::int64_t frame) noexcept
{
    return static_cast<float>(sample(channel, frame)) / 8388608.0F;
}

void render(std::span<float* const> channels, int frames, std::int64_t position) noexcept
{
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        for (int frame = 0; frame < frames; ++frame) {
            channels[channel][frame] = value(static_cast<int>(channel), position + frame);
        }
    }
}

std::optional<Report> check(std::span<const std::int32_t> samples, int channel) noexcept
{
    if (samples.empty()) {
        return std::nullopt;
    }
    Report report{.start = frameOf(samples[0], channel), .firstBreak = {}, .jump = {}};
    for (std::size_t index = 1; index < samples.size(); ++index) {
        const std::int64_t expected = report.start + static_cast<std::int64_t>(index);
        if (samples[index] == sample(channel, expected)) {
            continue;
        }
        if (index == 1) {
            return std::nullopt;
        }
        report.firstBreak = static_cast<std::int64_t>(index);
        const std::int64_t found = frameOf(samples[index], channel);
        if (index + 1 < samples.size() && samples[index + 1] == sample(channel, found + 1)) {
            report.jump = distance(expected, found);
        }
        break;
    }
    return report;
}

}  // namespace vantiro::RampSignal
