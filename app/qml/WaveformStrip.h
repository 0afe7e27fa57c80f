// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/paint/StripPainter.h"
#include "app/qml/LevelPicture.h"

#include <QQmlEngine>

namespace vantiro {

/// The level history that the model shows, the newest value at the right edge.
class WaveformStrip : public vantiro::LevelPicture {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit WaveformStrip(QQuickItem* parent = nullptr);

protected:
    [[nodiscard]] Picture picture(double ratio) const override;

private:
    mutable StripPainter m_painter;
};

}  // namespace vantiro
