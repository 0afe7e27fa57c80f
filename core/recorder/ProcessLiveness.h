// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <cstdint>
#include <optional>

/// Tells a living process from a number that another process uses again. Any thread.
namespace vantiro::ProcessLiveness {

/// Whether a process of this number exists, be it another user's or a zombie. False for numbers below 1.
[[nodiscard]] bool exists(std::int32_t pid);
/// The same from what kill(pid, 0) returned and the errno that it left.
[[nodiscard]] bool exists(int killResult, int error);

/// Sends a signal. Numbers below 2 are refused, since kill() reads 0 and less as whole groups of processes. The failure
/// is a CaptureError: "refusing to signal pid {pid}" or "cannot signal the recorder (pid {pid}): {errno's text}".
[[nodiscard]] Result<void> signal(std::int32_t pid, int number);

/// When the process started, in seconds since boot: fixed for its life, and different for the next process of the same
/// number. Nothing if there is none or it is a zombie.
[[nodiscard]] std::optional<double> startTime(std::int32_t pid);

}  // namespace vantiro::ProcessLiveness
