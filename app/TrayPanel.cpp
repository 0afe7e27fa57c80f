// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TrayPanel.h"

#include "core/foundation/Log.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QQmlComponent>
#include <QScreen>
#include <QUrl>
#include <QVariant>

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// The press that closes an open panel takes the keyboard from it first, and must not open it again.
    constexpr std::chrono::milliseconds samePress{300};
    /// Between the pointer and the panel.
    constexpr int distance = 8;

    /// A host that does not know the place tells 0, 0, and what it tells is not in points where those are larger than
    /// pixels: the pointer, which pressed, is at the same place.
    QPoint inPoints(const QPoint& told)
    {
        const bool isUsable = !told.isNull() && qFuzzyCompare(qGuiApp->devicePixelRatio(), 1.0)
            && QGuiApplication::screenAt(told) != nullptr;
        return isUsable ? told : QCursor::pos();
    }

}  // namespace

TrayPanel::TrayPanel(Desk& desk, QQmlEngine& engine) : m_desk(desk), m_engine(engine) { }

TrayPanel::~TrayPanel()
{
    if (QQuickWindow* window = std::exchange(m_window, nullptr)) {
        disconnect(window, nullptr, this, nullptr);
        delete window;
    }
}

void TrayPanel::press(const QPoint& place)
{
    if (QGuiApplication::platformName() != u"xcb"_s) {
        m_desk.openWindow();
    } else if (m_window != nullptr) {
        close();
    } else if (!m_sinceClosed.isValid() || m_sinceClosed.elapsed() > samePress.count()) {
        open(inPoints(place));
    }
}

QPoint TrayPanel::corner(const QPoint& place, const QSize& size, const QRect& screen)
{
    const bool isAbove = place.y() > screen.center().y();
    const QPoint wanted(
        place.x() - size.width() / 2, isAbove ? place.y() - distance - size.height() : place.y() + distance);
    // Its upper left comes first where the screen is too small.
    return {std::max(screen.left(), std::min(wanted.x(), screen.right() + 1 - size.width())),
        std::max(screen.top(), std::min(wanted.y(), screen.bottom() + 1 - size.height()))};
}

void TrayPanel::open(const QPoint& place)
{
    QQmlComponent component(&m_engine, QUrl(u"qrc:/qt/qml/Vantiro/MenuBarPanel.qml"_s));
    QObject* made = component.createWithInitialProperties({{u"desk"_s, QVariant::fromValue(&m_desk)}});
    m_window = qobject_cast<QQuickWindow*>(made);
    if (m_window == nullptr) {
        delete made;
        logLine(u"The panel could not be made."_s);
        m_desk.openWindow();
        return;
    }
    m_place = place;
    m_window->installEventFilter(this);
    connect(m_window, &QWindow::heightChanged, this, &TrayPanel::stand);
    connect(m_window, &QWindow::activeChanged, this, [this] { m_window->isActive() ? hold() : close(); });
    connect(m_window, &QWindow::visibleChanged, this, [this](bool isVisible) {
        if (!isVisible) {
            close();
        }
    });
    stand();
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

void TrayPanel::close()
{
    if (QQuickWindow* window = std::exchange(m_window, nullptr)) {
        disconnect(window, nullptr, this, nullptr);
        window->removeEventFilter(this);
        window->setMouseGrabEnabled(false);
        window->hide();
        // What is pressed in it may just be closing it.
        window->deleteLater();
        m_sinceClosed.start();
    }
}

void TrayPanel::stand()
{
    QScreen* screen = QGuiApplication::screenAt(m_place);
    screen = screen != nullptr ? screen : QGuiApplication::primaryScreen();
    m_window->setScreen(screen);
    m_window->setPosition(corner(m_place, m_window->size(), screen->availableGeometry()));
}

/// With the pointer in hand it is told of presses anywhere on the screen.
void TrayPanel::hold()
{
    m_window->setMouseGrabEnabled(true);
}

bool TrayPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_window && event->type() == QEvent::MouseButtonPress) {
        const auto* press = static_cast<QMouseEvent*>(event);
        if (!QRectF(QPointF(), m_window->size()).contains(press->position())) {
            close();
            return true;
        }
    } else if (watched == m_window && event->type() == QEvent::Expose && m_window->isExposed()) {
        hold();
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace vantiro
