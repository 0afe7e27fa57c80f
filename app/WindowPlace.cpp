// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/WindowPlace.h"

#include <QGuiApplication>
#include <QJsonObject>
#include <QScreen>

#include <algorithm>
#include <chrono>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    constexpr std::chrono::milliseconds rest{400};
    /// The part of the strip that can be grabbed in every form of the window.
    constexpr QSize strip{480, 44};
    constexpr QSize enough{120, 22};

    std::optional<QPoint> read(const QJsonValue& value)
    {
        const QJsonObject place = value.toObject();
        const QJsonValue x = place[u"x"_s];
        const QJsonValue y = place[u"y"_s];
        return x.isDouble() && y.isDouble() ? std::optional(QPoint(x.toInt(), y.toInt())) : std::nullopt;
    }

}  // namespace

WindowPlace::WindowPlace(const QString& file) : m_store(file)
{
    m_afterMove.setSingleShot(true);
    m_afterMove.setInterval(rest);
    connect(&m_afterMove, &QTimer::timeout, this, &WindowPlace::save);
}

WindowPlace::~WindowPlace()
{
    if (m_afterMove.isActive()) {
        save();
    }
}

void WindowPlace::adopt(QWindow& window)
{
    if (QGuiApplication::platformName() != u"xcb"_s) {
        return;
    }
    QList<QRect> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        screens << screen->availableGeometry();
    }
    if (const auto kept = read(m_store.value(u"main"_s))) {
        if (const auto place = reachable(*kept, screens)) {
            window.setFramePosition(*place);
        }
    }
    const auto moved = [this, &window] {
        // A window that is minimised, maximised or gone stands where it was.
        if (window.isVisible() && window.windowStates() == Qt::WindowNoState) {
            m_place = window.framePosition();
            m_afterMove.start();
        }
    };
    connect(&window, &QWindow::xChanged, this, moved);
    connect(&window, &QWindow::yChanged, this, moved);
}

std::optional<QPoint> WindowPlace::reachable(QPoint place, const QList<QRect>& screens)
{
    const bool isShown = std::ranges::any_of(screens, [place](const QRect& screen) {
        const QSize shown = screen.intersected(QRect(place, strip)).size();
        return shown.width() >= enough.width() && shown.height() >= enough.height();
    });
    return isShown ? std::optional(place) : std::nullopt;
}

void WindowPlace::save()
{
    m_afterMove.stop();
    if (m_place) {
        m_store.set(u"main"_s, QJsonObject{{u"x"_s, m_place->x()}, {u"y"_s, m_place->y()}});
    }
}

}  // namespace vantiro
