// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/capture/CaptureStats.h"

#include <QString>
#include <QStringList>

/// Figures and sentences as the screens print them.
namespace vantiro::Figures {

/// The text with a minus sign in the place of each hyphen that stands for one: before a digit, and after no letter,
/// digit or hyphen.
[[nodiscard]] QString withMinus(QString text);

/// Audio, lost on the way in, failed disk writes, clock drift, highest peak.
[[nodiscard]] QStringList ofTake(const CaptureStats& stats);

}  // namespace vantiro::Figures
