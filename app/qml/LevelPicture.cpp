// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/LevelPicture.h"

namespace vantiro {

LevelPicture::LevelPicture(ModelSignal news, QQuickItem* parent) : PictureItem(parent), m_news(news) { }

LevelPicture::~LevelPicture()
{
    PaintTick::shared().leave(*this);
}

void LevelPicture::setModel(AppModel* model)
{
    if (m_model == model) {
        return;
    }
    if (m_model) {
        disconnect(m_model, nullptr, this, nullptr);
    }
    m_model = model;
    if (model != nullptr) {
        connect(model, m_news, this, &LevelPicture::hearNews);
        repaint();
    }
    Q_EMIT modelChanged();
}

void LevelPicture::hearNews()
{
    // Not only while the window is exposed: what comes at its end has to be there when it is back.
    if (isVisible()) {
        PaintTick::shared().ask(*this);
    }
}

void LevelPicture::paintTick(PaintTick::Moment /*now*/)
{
    repaint();
}

void LevelPicture::itemChange(ItemChange change, const ItemChangeData& data)
{
    if (change == ItemVisibleHasChanged) {
        repaint();
    }
    PictureItem::itemChange(change, data);
}

}  // namespace vantiro
