// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vantiro {

/// The level that stands for silence, in dB.
inline constexpr float silenceDB = -120.0F;

/// A linear magnitude (1.0 is full scale) in dB, in 32-bit arithmetic. Zero, negative values and NaN give exactly
/// silenceDB. Any thread.
[[nodiscard]] float decibels(float magnitude) noexcept;

}  // namespace vantiro
