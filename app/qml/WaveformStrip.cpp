// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/WaveformStrip.h"

namespace vantiro {

WaveformStrip::WaveformStrip(QQuickItem* parent) : LevelPicture(&AppModel::shownHistoryChanged, parent) { }

Picture WaveformStrip::picture(double ratio) const
{
    const AppModel* shown = model();
    if (shown == nullptr) {
        return {};
    }
    return {m_painter.picture(size(), shown->shownHistory(), ratio), {}};
}

}  // namespace vantiro
