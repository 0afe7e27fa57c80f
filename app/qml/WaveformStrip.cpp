// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/WaveformStrip.h"

#include <QQuickWindow>

namespace vantiro {

WaveformStrip::WaveformStrip(QQuickItem* parent) : PictureItem(parent) { }

WaveformStrip::~WaveformStrip()
{
    PaintTick::shared().leave(*this);
}

void WaveformStrip::setModel(AppModel* model)
{
    if (m_model == model) {
        return;
    }
    if (m_model) {
        disconnect(m_model, nullptr, this, nullptr);
    }
    m_model = model;
    if (model != nullptr) {
        connect(model, &AppModel::historyChanged, this, &WaveformStrip::historyChanged);
        historyChanged();
    }
    Q_EMIT modelChanged();
}

void WaveformStrip::historyChanged()
{
    // Not only while the window is exposed: what comes at its end has to be there when it is back.
    if (isVisible()) {
        PaintTick::shared().ask(*this);
    }
}

void WaveformStrip::paintTick(PaintTick::Moment /*now*/)
{
    repaint();
}

void WaveformStrip::itemChange(ItemChange change, const ItemChangeData& data)
{
    if (change == ItemVisibleHasChanged) {
        repaint();
    }
    PictureItem::itemChange(change, data);
}

Picture WaveformStrip::picture(double ratio) const
{
    const AppModel* model = m_model;
    if (model == nullptr) {
        return {};
    }
    return {m_painter.picture(size(), model->history(), ratio), {}};
}

}  // namespace vantiro
