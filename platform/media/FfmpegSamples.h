// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>

struct AVFrame;

namespace vantiro::FfmpegSamples {

/// Copies `count` frames of a decoded piece from its frame `from` on to the planes, from their index `at` on. Samples
/// of a kind that is not known are silence. Any thread.
void copy(const AVFrame& piece, std::int64_t from, std::span<float* const> planes, std::int64_t at, std::int64_t count);

}  // namespace vantiro::FfmpegSamples
