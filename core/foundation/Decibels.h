// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace vantiro {

/// The level that stands for silence, in dB.
inline constexpr float silenceDB = -120.0F;

/// A linear magnitude (1.0 is full scale) in dB, in 32-bit arithmetic. Zero, negative values and NaN give exactly
/// silenceDB. Any thread.
[[nodiscard]] float decibels(float magnitude) noexcept;

namespace Decibels {

    /// A level in dB with one decimal and without its unit, halves away from zero, never "-0.0". Any thread.
    [[nodiscard]] QString text(float level);

}  // namespace Decibels

}  // namespace vantiro
