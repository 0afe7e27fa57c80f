// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/qml/SurfacePicture.h"

#include <QPointF>
#include <QQmlEngine>
#include <QQuickItem>

namespace vantiro {

/// An item that shows one picture, painted at the screen's ratio and laid exactly on device pixels wherever the item
/// stands, so that it is sharp at every scale factor. It must not be turned or scaled.
///
/// What derives from it names it with its namespace: otherwise Qt 6.4's description of the types, and with it qmllint,
/// does not know the base.
class PictureItem : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit PictureItem(QQuickItem* parent = nullptr);

protected:
    /// The picture at `ratio` device pixels a point; a null image shows nothing. Asked for while the main thread waits.
    [[nodiscard]] virtual Picture picture(double ratio) const = 0;

    /// Asks for the picture anew before the next frame.
    void repaint();

    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

private:
    /// From where the item stands to the nearest device pixel, in points.
    [[nodiscard]] QPointF snap() const;
    void followPlace();

    bool m_stale = true;
    QPoint m_origin;
    QSize m_pixels;
    QPointF m_snap;
    QMetaObject::Connection m_frames;
};

}  // namespace vantiro
