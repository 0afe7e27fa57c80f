// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/EndSignals.h"
#include "app/NowPlaying.h"
#include "app/RecordHotKey.h"
#include "app/Tray.h"
#include "app/TrayPanel.h"
#include "app/WindowPlace.h"
#include "app/model/AppModel.h"
#include "app/model/Departure.h"
#include "app/model/Desk.h"
#include "app/model/Links.h"
#include "app/model/LoginFlow.h"
#include "app/model/ModelFlows.h"
#include "app/model/QtScheduler.h"
#include "core/platform/Platform.h"
#include "platform/desktop/Appearance.h"
#include "platform/desktop/FileManager.h"
#include "platform/desktop/SingleInstance.h"
#include "platform/desktop/X11Startup.h"

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
    /// The model runs from here on. The bus owns the application's name in the session; null where there is none.
    explicit VantiroApp(Bus instance);
    ~VantiroApp() override;

    /// Shows the window, opens the links, and returns at the end of the program, with its exit code.
    [[nodiscard]] int run(const QStringList& links);

private Q_SLOTS:
    void closeWindow();

private:
    [[nodiscard]] ModelServices services();
    [[nodiscard]] Desk::Doors doors();
    [[nodiscard]] static LoginFlow::Services login();
    void listen();
    void listenToSession();
    void raise(const StartTokens& tokens);
    void finishStart(const StartTokens& tokens, X11Startup::Front front);
    void openLinks(const QStringList& links, const StartTokens& tokens);
    void showWindow();
    void hideWindow();
    void leave();

    std::unique_ptr<BusLink> m_session;
    SingleInstance m_instance;  ///< Keeps the name until the settings are saved: the next start reads them.
    FileManager m_files;
    Platform m_platform;
    QtScheduler m_scheduler;
    AppModel m_model;
    ModelFlows m_flows;
    Departure m_departure;
    LoginFlow m_login;
    Desk m_desk;
    Links m_links;
    NowPlaying m_nowPlaying;
    Tray m_tray;
    EndSignals m_endSignals;
    Appearance m_appearance;
    WindowPlace m_place;
    QTimer m_withoutTray;         ///< Runs while the window is closed and nothing in the tray stands in for it.
    QTimer m_sessionEnds;         ///< Runs for a while after the session manager asked to save.
    bool m_closedToTray = false;  ///< The user closed the window, and the item in the tray stands in for it.
    RecordHotKey m_hotKey;
    QQmlApplicationEngine m_engine;
    TrayPanel m_panel{m_desk, m_engine};
    QQuickWindow* m_window = nullptr;  ///< The engine's.
};

}  // namespace vantiro
