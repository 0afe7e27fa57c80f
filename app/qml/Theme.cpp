// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/Theme.h"

namespace vantiro {

void Theme::setReducedMotion(bool reducedMotion)
{
    if (m_reducedMotion != reducedMotion) {
        m_reducedMotion = reducedMotion;
        Q_EMIT reducedMotionChanged();
    }
}

}  // namespace vantiro
