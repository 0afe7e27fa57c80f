// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Tray.h"

#include <chrono>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// Long enough for a host that refuses to be no burden.
    constexpr std::chrono::seconds comesAgainAfter{10};

    enum Entry : std::int32_t {
        elapsedEntry = 1,
        afterElapsedEntry,
        recordEntry,
        openEntry,
        takesEntry,
        beforeQuitEntry,
        quitEntry,
    };

}  // namespace

Tray::Tray(Desk& desk, BusLink* session) : m_desk(desk), m_model(*desk.model()), m_host(session)
{
    m_comesAgain.setSingleShot(true);
    m_comesAgain.setInterval(comesAgainAfter);
    connect(&m_comesAgain, &QTimer::timeout, this, &Tray::comeOrGo);
    connect(&m_host, &TrayHost::changed, this, &Tray::comeOrGo);
    connect(&m_model, &AppModel::showsMenuBarItemChanged, this, &Tray::comeOrGo);
    connect(&m_model, &AppModel::menuBarElapsedChanged, this, &Tray::update);
    connect(&m_model, &AppModel::errorMessageChanged, this, &Tray::update);
    connect(&m_desk, &Desk::phaseChanged, this, &Tray::update);
    comeOrGo();
}

Tray::~Tray() = default;

void Tray::comeOrGo()
{
    const bool isWanted = m_host.isThere() && m_model.showsMenuBarItem();
    if (isWanted == (m_item != nullptr)) {
        return;
    }
    if (!isWanted) {
        drop();
        return;
    }
    m_item = TrayItem::make(content());
    if (!m_item) {
        return;
    }
    connect(m_item.get(), &TrayItem::registered, this, &Tray::registered, Qt::QueuedConnection);
    connect(m_item.get(), &TrayItem::pressed, this, &Tray::pressed, Qt::QueuedConnection);
    connect(m_item.get(), &TrayItem::chosen, this, &Tray::choose, Qt::QueuedConnection);
}

void Tray::drop()
{
    // What brought this about may be a message that the item's own connection is just reading.
    m_item.release()->deleteLater();
    setLives(false);
}

void Tray::registered(bool isTaken)
{
    if (!isTaken && m_item) {
        drop();
        m_comesAgain.start();
    } else {
        setLives(isTaken);
    }
}

void Tray::setLives(bool lives)
{
    // The host's answer may come when the item is gone again.
    lives = lives && m_item != nullptr;
    if (std::exchange(m_lives, lives) != lives) {
        Q_EMIT livesChanged();
    }
}

void Tray::update()
{
    if (m_item) {
        m_item->show(content());
    }
}

void Tray::choose(std::int32_t entry)
{
    switch (entry) {
    case recordEntry:
        m_desk.toggleTake();
        break;
    case takesEntry:
        m_desk.showTakes();
        [[fallthrough]];
    case openEntry:
        Q_EMIT windowWanted();
        break;
    case quitEntry:
        m_desk.departure()->quit();
        break;
    default:
        break;
    }
}

TrayContent Tray::content()
{
    const QString& time = m_model.menuBarElapsed();
    const bool isRecording = !time.isEmpty();
    const TraySymbol symbol = isRecording ? TraySymbol::stop
        : m_model.errorMessage()          ? TraySymbol::attention
                                          : TraySymbol::record;
    auto& pictures = m_pictures[symbol];
    if (pictures.empty()) {
        pictures = trayPictures(symbol);
    }
    TrayContent content{
        .title = isRecording ? u"Vantiro %1"_s.arg(time) : u"Vantiro"_s, .toolTip = time, .pictures = pictures};
    if (isRecording) {
        content.entries = {
            {.id = elapsedEntry, .text = time, .isEnabled = false}, {.id = afterElapsedEntry, .text = {}}};
    }
    content.entries.insert(content.entries.end(),
        {{.id = recordEntry, .text = m_desk.recordCommand()}, {.id = openEntry, .text = tr("Open Vantiro")},
            {.id = takesEntry, .text = tr("Show Takes")}, {.id = beforeQuitEntry, .text = {}},
            {.id = quitEntry, .text = tr("Quit")}});
    return content;
}

}  // namespace vantiro
