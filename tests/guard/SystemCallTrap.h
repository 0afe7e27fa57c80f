// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// System calls of one thread, trapped by the kernel while they are forbidden. clock_gettime() is let through: where
/// the clock is not readable without the kernel it is one, and still never waits.
namespace vantiro::callbackGuard {

/// Makes forbidSystemCalls() work on the calling thread. Any thread.
void prepareSystemCallTrap() noexcept;

/// Some thread could not be prepared: this kernel or machine has no means for it. Any thread.
[[nodiscard]] bool isSystemCallTrapMissing() noexcept;

/// From here on the first system call of this thread is a violation. RT safe.
void forbidSystemCalls() noexcept;
/// RT safe.
void allowSystemCalls() noexcept;

}  // namespace vantiro::callbackGuard
