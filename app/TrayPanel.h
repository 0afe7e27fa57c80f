// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/Desk.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPoint>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QRect>

namespace vantiro {

/// The panel behind the item in the tray. It is made when it is opened, and goes when it loses the keyboard, at a press
/// anywhere else, and at Escape. Main thread only.
class TrayPanel final : public QObject {
    Q_OBJECT

public:
    /// Both outlive this; the engine knows the screens' module by the time the panel is opened.
    TrayPanel(Desk& desk, QQmlEngine& engine);
    ~TrayPanel() override;

    /// The item was pressed: opens the panel at that place of the screen, as the host told it, or closes it. Where a
    /// program has no say in where its windows stand, brings the main window to the front instead.
    void press(const QPoint& place);

    /// The upper left corner of a window of `size` at `place`: beside it, and inside `screen`.
    [[nodiscard]] static QPoint corner(const QPoint& place, const QSize& size, const QRect& screen);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void open(const QPoint& place);
    void close();
    void stand();
    void hold();

    Desk& m_desk;
    QQmlEngine& m_engine;
    QQuickWindow* m_window = nullptr;  ///< Its own; while it is open.
    QPoint m_place;
    QElapsedTimer m_sinceClosed;
};

}  // namespace vantiro
