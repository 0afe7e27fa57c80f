// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/TakeFormat.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <span>

namespace vantiro {

/// Fills `bytes` from an offset and returns how many there were, fewer only at the file's end, or errno. Any thread.
[[nodiscard]] std::expected<std::size_t, int> readAt(int descriptor, std::int64_t offset, std::span<std::byte> bytes);

/// Whether a take whose header tells less than its file holds means it: from `offset` to `end` there is nothing, or one
/// well-formed chunk after the other, as tagging programs leave them behind the audio. Samples that pass for chunks by
/// chance do not exist in practice. False if the file cannot be read there. Any thread.
[[nodiscard]] bool areChunks(int descriptor, TakeFormat format, std::int64_t offset, std::int64_t end);

}  // namespace vantiro
