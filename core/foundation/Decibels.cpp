// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Decibels.h"

#include <cmath>

namespace vantiro {

float decibels(float magnitude) noexcept
{
    return magnitude > 0.0F ? 20.0F * std::log10(magnitude) : silenceDB;
}

namespace Decibels {

    QString text(float level)
    {
        const float rounded = std::round(level * 10.0F) / 10.0F;
        // A negative zero is equal to zero, too.
        return rounded == 0.0F ? QStringLiteral("0.0") : QString::number(static_cast<double>(rounded), 'f', 1);
    }

}  // namespace Decibels

}  // namespace vantiro
