// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/takes/Take.h"

/// Which files the caches of analyses and overviews may serve, since what is kept is found by name and size alone.
namespace vantiro::KeptAnalysis {

/// Whether what is found in this file may be kept and used again: a finished take of the takes folder. Removes what was
/// kept of another file of that name and size. May wait for a slow disk; any thread.
[[nodiscard]] bool isKept(const Take& take);

}  // namespace vantiro::KeptAnalysis
