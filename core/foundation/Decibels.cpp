// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Decibels.h"

#include <cmath>

namespace vantiro {

float decibels(float magnitude) noexcept
{
    return magnitude > 0.0F ? 20.0F * std::log10(magnitude) : silenceDB;
}

}  // namespace vantiro
