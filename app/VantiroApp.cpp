// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VantiroApp.h"

#include "app/MainWindowLoader.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/DesktopPlatform.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QSessionManager>
#include <QUrl>

#include <chrono>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// A desktop's panel that starts anew takes the items back within this time.
    constexpr std::chrono::seconds trayPatience{5};

    /// A session that ends closes its windows within this time after it asked them to save. Nobody tells that a log-out
    /// was cancelled.
    constexpr std::chrono::seconds sessionPatience{30};

    void openFolder(const QString& folder)
    {
        QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
    }

    Trace trace()
    {
        return Trace::fromEnvironment(VantiroPaths::traceFile());
    }

}  // namespace

VantiroApp::VantiroApp()
    : m_session(BusLink::open(BusKind::session))
    , m_files(m_session.get(), openFolder)
    , m_platform(makeDesktopPlatform())
    , m_model(std::make_unique<SettingsStore>(VantiroPaths::settingsFile(), trace()),
          SourceMemory::load(VantiroPaths::sourcesFile()), trace())
    , m_flows(m_model, services())
    , m_departure(m_model, services(), [this] { m_flows.takes().pollRecorder(); })
    , m_desk(m_model, m_flows, m_departure, doors())
    , m_tray(m_desk, m_session.get())
    , m_appearance(m_session.get())
    , m_place(VantiroPaths::support() + u"/window.json"_s)
{
    listen();
    m_flows.start();
}

VantiroApp::~VantiroApp() = default;

ModelServices VantiroApp::services()
{
    return {.audio = *m_platform.audio,
        .permission = m_platform.permission,
        .scheduler = m_scheduler,
        .reveal = [this](const QString& path) { m_files.showItem(path); }};
}

Desk::Doors VantiroApp::doors()
{
    return {
        .window = [this] { showWindow(); }, .folder = [this](const QString& folder) { m_files.showFolder(folder); }};
}

void VantiroApp::listen()
{
    connect(&m_departure, &Departure::show, this, &VantiroApp::showWindow);
    connect(&m_departure, &Departure::hide, this, &VantiroApp::hideWindow);
    connect(&m_departure, &Departure::leave, this, &VantiroApp::leave);
    connect(&m_endSignals, &EndSignals::received, &m_departure, &Departure::terminate);
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager& session) {
        session.setRestartHint(QSessionManager::RestartNever);
        m_sessionEnds.start();
    });
    m_sessionEnds.setSingleShot(true);
    m_sessionEnds.setInterval(sessionPatience);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive) {
            m_flows.becomeActive();
        }
    });
    connect(&m_tray, &Tray::windowWanted, this, &VantiroApp::showWindow);
    // Nobody must be left with a program that nothing leads to.
    m_withoutTray.setSingleShot(true);
    m_withoutTray.setInterval(trayPatience);
    connect(&m_withoutTray, &QTimer::timeout, this, &VantiroApp::showWindow);
    connect(&m_tray, &Tray::livesChanged, this,
        [this] { m_tray.lives() || !m_closedToTray ? m_withoutTray.stop() : m_withoutTray.start(); });
}

int VantiroApp::run()
{
    m_window = MainWindowLoader::load(m_engine, m_desk, MainWindowLoader::wantedFrame());
    if (m_window == nullptr) {
        return 1;
    }
    Theme& theme = MainWindowLoader::theme(m_engine);
    const auto applyMotion = [this, &theme] { theme.setReducedMotion(m_appearance.reducedMotion()); };
    connect(&m_appearance, &Appearance::reducedMotionChanged, this, applyMotion);
    applyMotion();
    // The signal is the screens' own, so that its name is all that is known of it here.
    connect(m_window, SIGNAL(closeWanted()), this, SLOT(closeWindow()));
    m_place.adopt(*m_window);
    m_window->show();
    return QCoreApplication::exec();
}

void VantiroApp::closeWindow()
{
    if (m_sessionEnds.isActive()) {
        m_departure.terminate();
        return;
    }
    const bool hasTray = m_tray.lives();
    m_departure.close(hasTray ? Departure::Tray::lives : Departure::Tray::absent);
    m_closedToTray = hasTray && !m_window->isVisible();
}

void VantiroApp::showWindow()
{
    if (m_window == nullptr) {
        return;
    }
    m_withoutTray.stop();
    m_closedToTray = false;
    m_window->windowStates().testFlag(Qt::WindowMinimized) ? m_window->showNormal() : m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

void VantiroApp::hideWindow()
{
    if (m_window != nullptr) {
        m_window->hide();
    }
}

void VantiroApp::leave()
{
    hideWindow();
    // Not quit(), which asks the windows, and theirs is to say no.
    QCoreApplication::exit(0);
}

}  // namespace vantiro
