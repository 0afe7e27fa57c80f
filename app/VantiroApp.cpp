// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VantiroApp.h"

#include "app/MainWindowLoader.h"
#include "core/foundation/InstallLocation.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/DesktopPlatform.h"
#include "platform/desktop/LoginItem.h"

#include <QDesktopServices>
#include <QDir>
#include <QGuiApplication>
#include <QSessionManager>
#include <QUrl>

#include <chrono>
#include <cstdint>
#include <utility>

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

VantiroApp::VantiroApp(Bus instance)
    : m_session(BusLink::open(BusKind::session))
    , m_instance(std::move(instance))
    , m_files(m_session.get(), openFolder)
    , m_platform(makeDesktopPlatform())
    , m_model(std::make_unique<SettingsStore>(VantiroPaths::settingsFile(), trace()),
          SourceMemory::load(VantiroPaths::sourcesFile()), trace())
    , m_flows(m_model, services())
    , m_departure(m_model, services(), [this] { m_flows.takes().pollRecorder(); })
    , m_login(m_model, m_scheduler, login())
    , m_desk(m_model, m_flows, m_departure, doors())
    , m_links(m_model, m_flows, [this] { showWindow(); })
    , m_nowPlaying(m_model, m_flows.playback(), m_scheduler, m_session.get())
    , m_tray(m_desk, m_session.get())
    , m_appearance(m_session.get())
    , m_place(VantiroPaths::support() + u"/window.json"_s)
    , m_hotKey(m_model, RecordHotKey::forPlatform(m_model), [this] { m_desk.toggleTake(); })
{
    listen();
    listenToSession();
    m_flows.start();
    m_login.refresh();
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
    return {.window = [this] { showWindow(); },
        .folder = [this](const QString& folder) { m_files.showFolder(folder); },
        .openAtLogin = [this](bool on) { m_login.setOpensAtLogin(on); }};
}

LoginFlow::Services VantiroApp::login()
{
    const QString program = LoginItem::program(QCoreApplication::applicationFilePath());
    return {.isOn = [] { return LoginItem::state() == LoginItem::State::on; },
        .set = [program](
                   bool on) { return LoginItem::set(on ? LoginItem::State::on : LoginItem::State::off, program); },
        .isTemporary =
            [program] { return InstallLocation::isTemporary(InstallLocation::of(program, QDir::homePath())); }};
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
            m_login.refresh();
        }
    });
    connect(&m_tray, &Tray::windowWanted, this, &VantiroApp::showWindow);
    connect(&m_tray, &Tray::pressed, &m_panel, &TrayPanel::press);
    // Nobody must be left with a program that nothing leads to.
    m_withoutTray.setSingleShot(true);
    m_withoutTray.setInterval(trayPatience);
    connect(&m_withoutTray, &QTimer::timeout, this, &VantiroApp::showWindow);
    connect(&m_tray, &Tray::livesChanged, this,
        [this] { m_tray.lives() || !m_closedToTray ? m_withoutTray.stop() : m_withoutTray.start(); });
}

void VantiroApp::listenToSession()
{
    connect(&m_nowPlaying, &NowPlaying::raiseWanted, this, &VantiroApp::showWindow);
    connect(&m_nowPlaying, &NowPlaying::quitWanted, &m_departure, &Departure::quit);
    // Whoever asks has the answer before anything is done.
    connect(&m_instance, &SingleInstance::activated, this, &VantiroApp::raise, Qt::QueuedConnection);
    connect(&m_instance, &SingleInstance::opened, this, &VantiroApp::openLinks, Qt::QueuedConnection);
    // Keys of the desktop's own, which bounce as the hot key does.
    connect(&m_instance, &SingleInstance::toggleWanted, &m_hotKey, &RecordHotKey::press, Qt::QueuedConnection);
}

void VantiroApp::raise(const StartTokens& tokens)
{
    constexpr const char* variable = "XDG_ACTIVATION_TOKEN";
    const bool isActivated = !tokens.activation.isEmpty() && QGuiApplication::platformName().startsWith(u"wayland");
    // Where Qt looks when a window wants to come to the front under Wayland. Programs that are started from here must
    // not find it. Other threads read the environment, which keeps its size: the variable is there from the start.
    if (isActivated) {
        qputenv(variable, tokens.activation.toUtf8());
    }
    showWindow();
    if (isActivated) {
        qputenv(variable, {});
    }
    finishStart(tokens, X11Startup::Front::wanted);
}

/// Qt takes what its own start was given, and nothing later.
void VantiroApp::finishStart(const StartTokens& tokens, X11Startup::Front front)
{
    if (m_window != nullptr && !tokens.startup.isEmpty() && QGuiApplication::platformName() == u"xcb") {
        X11Startup::finish(static_cast<std::uint32_t>(m_window->winId()), tokens.startup, front);
    }
}

void VantiroApp::openLinks(const QStringList& links, const StartTokens& tokens)
{
    bool shows = false;
    for (const QString& link : links) {
        shows = m_links.open(link) == Links::Outcome::visible || shows;
    }
    // The DJ's program keeps the front unless there is something to see.
    if (shows) {
        raise(tokens);
    } else {
        finishStart(tokens, X11Startup::Front::left);
    }
}

int VantiroApp::run(const QStringList& links)
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
    QMetaObject::invokeMethod(this, [this, links] { openLinks(links, {}); }, Qt::QueuedConnection);
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
