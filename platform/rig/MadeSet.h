// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace vantiro {

/// A DJ set that nobody played: two tracks (124 beats a minute in A minor, 128 in C minor) with kicks, hats, bass lines
/// and pads, each with a breakdown without kick and a riser back, and a blend between them. Every sample is a function
/// of its frame alone, so any stretch can be rendered at any time and comes out the same. No sample is above -5.5 dBFS,
/// and the loud bars reach -7. The first breakdown begins after 23 seconds.
class MadeSet {
public:
    /// Length of the set in seconds, before it starts again.
    static constexpr double lengthSeconds = 114.2;

    /// `sampleRate` in Hz, 8000 to 192000.
    explicit MadeSet(int sampleRate);

    /// Fills the first two channels with left and right (one channel gets left), any further channel with silence.
    /// `position` counts frames from the start of the set. One thread at a time; no allocation. RT safe.
    void render(std::span<float* const> channels, int frames, std::int64_t position) const noexcept;

    /// Left and right at one frame. Any thread. RT safe.
    [[nodiscard]] std::array<float, 2> frame(std::int64_t position) const noexcept;

private:
    int m_sampleRate;
};

}  // namespace vantiro
