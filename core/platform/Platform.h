// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPermission.h"
#include "core/platform/AudioPlatform.h"
#include "core/platform/PowerPlatform.h"

#include <memory>

namespace vantiro {

/// All that core asks of the system around it, made once in main() and handed down.
struct Platform {
    std::unique_ptr<AudioPlatform> audio;
    std::shared_ptr<AudioPermission> permission = {};  ///< Of the audio inputs.
    std::shared_ptr<PowerPlatform> power = {};         ///< Shared with threads that may outlast a take; may be absent.
};

}  // namespace vantiro
