// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/MeterView.h"

#include <QQmlContext>
#include <QQmlProperty>
#include <QQuickWindow>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using namespace Qt::Literals::StringLiterals;

    constexpr auto valueTime = 1s;  ///< Whoever listens to it cannot take it in faster.

}  // namespace

MeterView::MeterView(QQuickItem* parent) : PictureItem(parent)
{
    setImplicitHeight(MeterPainter::height(MeterPainter::Size::normal));
}

MeterView::~MeterView()
{
    PaintTick::shared().leave(*this);
}

void MeterView::setModel(AppModel* model)
{
    if (m_model == model) {
        return;
    }
    if (m_model) {
        disconnect(m_model, nullptr, this, nullptr);
    }
    m_model = model;
    if (model != nullptr) {
        connect(model, &AppModel::levelsChanged, this, &MeterView::levelsChanged);
        repaint();
    }
    Q_EMIT modelChanged();
}

void MeterView::setCompact(bool compact)
{
    if (m_compact != compact) {
        m_compact = compact;
        setImplicitHeight(MeterPainter::height(compact ? MeterPainter::Size::compact : MeterPainter::Size::normal));
        repaint();
        Q_EMIT compactChanged();
    }
}

void MeterView::setSegments(int segments)
{
    if (m_segments != segments) {
        m_segments = segments;
        repaint();
        Q_EMIT segmentsChanged();
    }
}

MeterPainter::Form MeterView::form(double ratio) const
{
    return {.size = m_compact ? MeterPainter::Size::compact : MeterPainter::Size::normal,
        .width = width(),
        .segments = m_segments,
        .ratio = ratio};
}

void MeterView::levelsChanged()
{
    // Not only while the window is exposed: what comes at its end has to be there when it is back.
    if (isVisible()) {
        PaintTick::shared().ask(*this);
    }
}

void MeterView::paintTick(PaintTick::Moment now)
{
    const AppModel* model = m_model;
    if (model == nullptr) {
        return;
    }
    const MeterLevels& levels = model->levels();
    const MeterPainter::Form look = form(window() != nullptr ? window()->effectiveDevicePixelRatio() : 1);
    if (MeterPainter::shown(look, levels) != MeterPainter::shown(look, m_shown)) {
        repaint();
    }
    const QString value = MeterPainter::spoken(levels);
    if (value == m_value) {
        return;
    }
    if (now - m_valueTold < valueTime) {
        // The last word is told as well, if a little later.
        PaintTick::shared().ask(*this);
        return;
    }
    m_valueTold = now;
    m_value = value;
    say("Accessible.description", value);
    Q_EMIT valueChanged();
}

Picture MeterView::picture(double ratio) const
{
    const AppModel* model = m_model;
    if (model == nullptr || width() <= 0) {
        return {};
    }
    m_shown = model->levels();
    const MeterPainter::Result painted = m_painter.picture(form(ratio), m_shown);
    return {painted.image, painted.origin};
}

// The attached type is Qt's own secret in C++, and a value cannot be given to it: it is told as the description.
void MeterView::say(const char* property, const QString& words)
{
    if (QQmlContext* context = qmlContext(this); context != nullptr) {
        QQmlProperty::write(this, QLatin1StringView(property), words, context);
    }
}

void MeterView::componentComplete()
{
    PictureItem::componentComplete();
    say("Accessible.name", tr("Level meter"));
    const AppModel* model = m_model;
    m_value = MeterPainter::spoken(model != nullptr ? model->levels() : MeterLevels{});
    say("Accessible.description", m_value);
    Q_EMIT valueChanged();
}

void MeterView::itemChange(ItemChange change, const ItemChangeData& data)
{
    if (change == ItemVisibleHasChanged) {
        repaint();
    }
    PictureItem::itemChange(change, data);
}

}  // namespace vantiro
