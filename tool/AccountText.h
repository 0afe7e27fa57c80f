// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/recorder/RecorderState.h"

#include <QString>
#include <QStringList>

namespace vantiro {

/// The account of a take in plain lines: where it is, how long, how loud, what was lost, why it ended.
[[nodiscard]] QStringList accountText(const RecorderState& state);

}  // namespace vantiro
