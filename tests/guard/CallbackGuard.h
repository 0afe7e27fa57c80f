// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// A library that is loaded before all others (LD_PRELOAD) into a program that records or plays, and that watches what
/// its audio callback does. The first call there that could block ends the program with a message and the way that led
/// to it.
///
/// At the program's end it tells on standard error how many callbacks it watched. The environment variable
/// VANTIRO_GUARD_PROBE makes the guard itself do something inside one of the callbacks: what is forbidden (malloc,
/// mutex, write), for the proof that it would be caught, or the one system call that is not (clock).
namespace vantiro::callbackGuard {

/// This thread is inside the callback. RT safe.
[[nodiscard]] bool isInside() noexcept;

/// Ends the process, which called `what` inside the callback. Any thread.
[[noreturn]] void violated(const char* what) noexcept;

/// violated() if this thread is inside the callback. RT safe.
inline void refuseInside(const char* what) noexcept
{
    if (isInside()) {
        violated(what);
    }
}

}  // namespace vantiro::callbackGuard
