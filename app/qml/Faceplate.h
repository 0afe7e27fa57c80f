// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qml/PictureItem.h"

#include <QQmlEngine>

namespace vantiro {

/// The plate that everything stands on: lit from above, sandblasted if `grain` is set, with a rim that catches the
/// light.
class Faceplate : public vantiro::PictureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool grain READ grain WRITE setGrain NOTIFY grainChanged)

public:
    using PictureItem::PictureItem;

    [[nodiscard]] bool grain() const { return m_grain; }
    void setGrain(bool grain);

    /// 128 points of sandblasted metal, to be repeated: a pixel a speck at every ratio, the same ones each time.
    [[nodiscard]] static QImage grainTile(double ratio);

Q_SIGNALS:
    void grainChanged();

protected:
    [[nodiscard]] Picture picture(double ratio) const override;

private:
    bool m_grain = true;
};

}  // namespace vantiro
