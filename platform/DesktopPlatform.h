// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/Platform.h"

namespace vantiro {

/// The Linux desktop. Made once a process, before threads that read the environment.
[[nodiscard]] Platform makeDesktopPlatform();

}  // namespace vantiro
