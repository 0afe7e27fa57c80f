// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/EndSignals.h"
#include "app/Tray.h"
#include "app/WindowPlace.h"
#include "app/model/AppModel.h"
#include "app/model/Departure.h"
#include "app/model/Desk.h"
#include "app/model/ModelFlows.h"
#include "app/model/QtScheduler.h"
#include "core/platform/Platform.h"
#include "platform/desktop/Appearance.h"
#include "platform/desktop/FileManager.h"

#include <QObject>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>

#include <memory>

namespace vantiro {

/// The application: owns the model and what drives it, the window, and the ways to reach both. Whatever stands further
/// down goes first at the end. Made after the QGuiApplication; main thread only.
class VantiroApp final : public QObject {
    Q_OBJECT

public:
    /// The model runs from here on.
    VantiroApp();
    ~VantiroApp() override;

    /// Shows the window and returns at the end of the program, with its exit code.
    [[nodiscard]] int run();

private Q_SLOTS:
    void closeWindow();

private:
    [[nodiscard]] ModelServices services();
    [[nodiscard]] Desk::Doors doors();
    void listen();
    void showWindow();
    void hideWindow();
    void leave();

    std::unique_ptr<BusLink> m_session;
    FileManager m_files;
    Platform m_platform;
    QtScheduler m_scheduler;
    AppModel m_model;
    ModelFlows m_flows;
    Departure m_departure;
    Desk m_desk;
    Tray m_tray;
    EndSignals m_endSignals;
    Appearance m_appearance;
    WindowPlace m_place;
    QTimer m_withoutTray;         ///< Runs while the window is closed and nothing in the tray stands in for it.
    QTimer m_sessionEnds;         ///< Runs for a while after the session manager asked to save.
    bool m_closedToTray = false;  ///< The user closed the window, and the item in the tray stands in for it.
    QQmlApplicationEngine m_engine;
    QQuickWindow* m_window = nullptr;  ///< The engine's.
};

}  // namespace vantiro
