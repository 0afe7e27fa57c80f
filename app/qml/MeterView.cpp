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

MeterView::MeterView(QQuickItem* parent) : LevelPicture(&AppModel::shownLevelsChanged, parent)
{
    setImplicitHeight(MeterPainter::height(MeterPainter::Size::normal));
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

void MeterView::paintTick(PaintTick::Moment now)
{
    const AppModel* heard = model();
    if (heard == nullptr) {
        return;
    }
    const MeterLevels& levels = heard->shownLevels();
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
    const AppModel* heard = model();
    if (heard == nullptr || width() <= 0) {
        return {};
    }
    m_shown = heard->shownLevels();
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
    LevelPicture::componentComplete();
    say("Accessible.name", tr("Level meter"));
    const AppModel* heard = model();
    m_value = MeterPainter::spoken(heard != nullptr ? heard->shownLevels() : MeterLevels{});
    say("Accessible.description", m_value);
    Q_EMIT valueChanged();
}

}  // namespace vantiro
