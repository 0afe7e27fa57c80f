// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>

/// A test signal in which each frame of each channel has a 24-bit value of its own, so that a lost, doubled, swapped
/// or altered sample shows. The values of a channel repeat after 2^24 frames only, and neighbours lie far apart.
namespace vantiro::RampSignal {

/// The sample of `channel` (0 to 31) at `frame`, as a 24-bit integer. Any thread.
[[nodiscard]] std::int32_t sample(int channel, std::int64_t frame) noexcept;

/// The same as a float, exactly sample() / 2^23. Any thread.
[[nodiscard]] float value(int channel, std::int64_t frame) noexcept;

/// Fills the channels from `position` on; of the shape that a virtual device renders with. Any thread.
void render(std::span<float* const> channels, int frames, std::int64_t position) noexcept;

/// What a check of recorded samples found.
struct Report {
    /// The frame of the signal (modulo 2^24) that the first sample shows.
    std::int64_t start = 0;
    /// Index of the first sample that does not follow the one before it; nothing if all do.
    std::optional<std::int64_t> firstBreak;
    /// What follows the break: by how many frames the signal jumped there. Nothing if the sample is none that is
    /// followed by its successor.
    std::optional<std::int64_t> jump;

    bool operator==(const Report&) const = default;
};

/// Checks the samples of one channel (24-bit integers). Nothing if there are none, or if the first two do not
/// follow one another. Any thread.
[[nodiscard]] std::optional<Report> check(std::span<const std::int32_t> samples, int channel) noexcept;

}  // namespace vantiro::RampSignal
