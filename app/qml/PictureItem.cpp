// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/PictureItem.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include <cmath>
#include <memory>

namespace vantiro {

PictureItem::PictureItem(QQuickItem* parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void PictureItem::repaint()
{
    m_stale = true;
    update();
}

QPointF PictureItem::snap() const
{
    const double ratio = window()->effectiveDevicePixelRatio();
    const QPointF place = mapToScene(QPointF(0, 0)) * ratio;
    return QPointF(std::round(place.x()) - place.x(), std::round(place.y()) - place.y()) / ratio;
}

// A parent that moves tells its children nothing, so each frame asks; a window at rest draws none.
void PictureItem::followPlace()
{
    if (isVisible() && snap() != m_snap) {
        update();
    }
}

QSGNode* PictureItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData* /*data*/)
{
    std::unique_ptr<QSGImageNode> node(static_cast<QSGImageNode*>(old));
    const double ratio = window()->effectiveDevicePixelRatio();
    m_snap = snap();
    if (m_stale || node == nullptr) {
        m_stale = false;
        const Picture painted = picture(ratio);
        if (painted.image.isNull()) {
            return nullptr;
        }
        if (node == nullptr) {
            node.reset(window()->createImageNode());
            node->setOwnsTexture(true);
            node->setFiltering(QSGTexture::Nearest);
        }
        node->setTexture(window()->createTextureFromImage(painted.image));
        node->setSourceRect(QRectF(QPointF(0, 0), painted.image.size()));
        m_origin = painted.origin;
        m_pixels = painted.image.size();
    }
    node->setRect(QRectF(m_snap + QPointF(m_origin) / ratio, QSizeF(m_pixels) / ratio));
    return node.release();
}

void PictureItem::itemChange(ItemChange change, const ItemChangeData& data)
{
    if (change == ItemSceneChange) {
        disconnect(m_frames);
        if (data.window != nullptr) {
            m_frames = connect(data.window, &QQuickWindow::afterAnimating, this, &PictureItem::followPlace);
        }
        repaint();
    } else if (change == ItemDevicePixelRatioHasChanged) {
        repaint();
    }
    QQuickItem::itemChange(change, data);
}

void PictureItem::geometryChange(const QRectF& now, const QRectF& before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) {
        repaint();
    } else {
        update();
    }
}

}  // namespace vantiro
