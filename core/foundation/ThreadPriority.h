// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vantiro {

/// Makes the calling thread stand back, for processors and disks, behind all threads of usual priority; what it starts
/// from then on does too. For good: an ordinary user cannot take it back. A system that refuses is passed over. Any
/// thread that nobody at a screen waits for.
void standBackForGood() noexcept;

}  // namespace vantiro
