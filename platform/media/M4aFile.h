// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/copies/CopyMedia.h"

/// Copies that are there already. Any thread.
namespace vantiro::M4aFile {

/// As CopyMedia::inspect.
[[nodiscard]] Result<CopyMedia::Facts> inspect(const QString& path);

/// As CopyMedia::remux.
[[nodiscard]] Result<void> remux(const QString& source, const TakeTags& tags, const QString& target);

}  // namespace vantiro::M4aFile
