// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/TrayPictures.h"
#include "app/model/Desk.h"
#include "platform/desktop/TrayHost.h"
#include "platform/desktop/TrayItem.h"

#include <QObject>
#include <QTimer>

#include <map>
#include <memory>

namespace vantiro {

/// The application's item in the tray: there while somebody shows such items and the user wants it. Main thread only.
class Tray final : public QObject {
    Q_OBJECT

public:
    /// The link is the session bus; it may be absent. All outlive this.
    Tray(Desk& desk, BusLink* session);
    ~Tray() override;

    /// A host has taken the item.
    [[nodiscard]] bool lives() const { return m_lives; }

Q_SIGNALS:
    /// The item was pressed, at that place of the screen as the host tells it.
    void pressed(const QPoint& place);
    /// The main window is wanted.
    void windowWanted();
    /// The item came, or went.
    void livesChanged();

private:
    void comeOrGo();
    void drop();
    void registered(bool isTaken);
    void setLives(bool lives);
    void update();
    void choose(std::int32_t entry);
    [[nodiscard]] TrayContent content();

    Desk& m_desk;
    AppModel& m_model;
    TrayHost m_host;
    std::unique_ptr<TrayItem> m_item;
    bool m_lives = false;
    QTimer m_comesAgain;  ///< Runs after the host did not take the item, or lost it.
    std::map<TraySymbol, std::vector<TrayPicture>> m_pictures;  ///< As far as they were wanted.
};

}  // namespace vantiro
