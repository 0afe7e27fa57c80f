// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/AudioPermission.h"

namespace vantiro {

/// A desktop program may open every input that PipeWire shows it: what a sandbox keeps away is never shown.
class DesktopPermission final : public AudioPermission {
public:
    [[nodiscard]] Answer status() override { return Answer::allowed; }
    [[nodiscard]] Answer request() override { return Answer::allowed; }
};

}  // namespace vantiro
