// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <pthread.h>

/// Real-time scheduling as far as the system grants it without another service's help. Any thread.
namespace vantiro::realTime {

/// Gives it to a thread of this process; false if it is not granted.
bool give(pthread_t thread);
/// Whether give() would succeed.
[[nodiscard]] bool isGranted();

}  // namespace vantiro::realTime
