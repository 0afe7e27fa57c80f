// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyEncoder.h"

#include <cstdint>

/// WAV with 24-bit integers, with the header that takes have. A take that holds such samples already is copied byte by
/// byte; all others are rounded as takes are.
namespace vantiro::WavCopy {

/// The most bytes of audio that a copy may have: a safe margin below what the format's 32-bit sizes can tell.
inline constexpr std::int64_t maxAudioBytes = 4'000'000'000;

/// As CopyMedia::openEncoder.
[[nodiscard]] Result<std::unique_ptr<CopyEncoder>> open(const CopyEncoder::Plan& plan);

}  // namespace vantiro::WavCopy
