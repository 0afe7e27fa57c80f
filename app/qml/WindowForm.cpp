// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/WindowForm.h"

#include <QEasingCurve>
#include <QScreen>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace vantiro {

namespace {

    int between(int from, int to, double share)
    {
        return from + int(std::lround(share * (to - from)));
    }

}  // namespace

WindowForm::WindowForm(QObject* parent) : QObject(parent)
{
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    m_animation.setEasingCurve(QEasingCurve::InOutCubic);
    // The window system may take the last size later than it was asked, or never.
    m_patience.setSingleShot(true);
    m_patience.setInterval(std::chrono::milliseconds(250));
    connect(&m_animation, &QVariantAnimation::valueChanged, this,
        [this](const QVariant& share) { step(share.toDouble()); });
    connect(&m_animation, &QVariantAnimation::finished, this, &WindowForm::arrive);
    connect(&m_patience, &QTimer::timeout, this, [this] { setMoving(false); });
}

WindowForm::~WindowForm() = default;

void WindowForm::setSize(QSizeF size)
{
    if (size != m_size) {
        m_size = size;
        Q_EMIT sizeChanged();
        follow();
    }
}

void WindowForm::componentComplete()
{
    m_complete = true;
    m_window->setMinimumSize(m_size.toSize());
    m_window->resize(m_size.toSize());
    connect(m_window, &QWindow::widthChanged, this, &WindowForm::settle);
    connect(m_window, &QWindow::heightChanged, this, &WindowForm::settle);
}

QRect WindowForm::placed(const QRect& now, QSize size, const QRect& screen)
{
    QRect then(QPoint(now.x() + (now.width() - size.width()) / 2, now.y()), size);
    if (now.left() >= screen.left() && now.right() <= screen.right()) {
        then.moveRight(std::min(then.right(), screen.right()));
        then.moveLeft(std::max(then.left(), screen.left()));
    }
    return then;
}

void WindowForm::setMoving(bool moving)
{
    if (moving != m_moving) {
        m_moving = moving;
        Q_EMIT movingChanged();
    }
}

void WindowForm::follow()
{
    if (!m_complete) {
        return;
    }
    const QSize size = m_size.toSize();
    m_animation.stop();
    m_patience.stop();
    if ((m_window->windowStates() & (Qt::WindowMaximized | Qt::WindowFullScreen)) != 0) {
        m_window->setMinimumSize(size);
        setMoving(false);
        return;
    }
    m_from = m_window->geometry();
    m_to = placed(m_from, size, m_window->screen()->availableGeometry());
    m_window->setMinimumSize(size.boundedTo(m_from.size()));
    if (m_duration <= 0 || !m_window->isVisible()) {
        step(1);
        m_window->setMinimumSize(size);
        setMoving(false);
        return;
    }
    setMoving(true);
    m_animation.setDuration(m_duration);
    m_animation.start();
}

void WindowForm::step(double share)
{
    m_window->setGeometry(between(m_from.x(), m_to.x(), share), between(m_from.y(), m_to.y(), share),
        between(m_from.width(), m_to.width(), share), between(m_from.height(), m_to.height(), share));
}

void WindowForm::arrive()
{
    m_window->setMinimumSize(m_size.toSize());
    m_patience.start();
    settle();
}

void WindowForm::settle()
{
    if (m_moving && m_patience.isActive() && m_window->size() == m_to.size()) {
        m_patience.stop();
        setMoving(false);
    }
}

}  // namespace vantiro
