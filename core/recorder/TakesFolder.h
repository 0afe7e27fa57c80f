// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/SettingsStore.h"

#include <QString>

/// Where new takes go.
namespace vantiro::TakesFolder {

/// The folder that the settings name, if it is an absolute path, else VantiroPaths::takes().
[[nodiscard]] QString in(const SettingsStore& settings);
/// The same for the settings as they are on disk now.
[[nodiscard]] QString current();

}  // namespace vantiro::TakesFolder
