// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/BusLink.h"

#include <QByteArray>
#include <QObject>
#include <QPoint>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

struct sd_bus_message;

namespace vantiro {

/// A square picture: four bytes a pixel, opacity first, then red, green and blue.
struct TrayPicture {
    int side = 0;  ///< Pixels.
    QByteArray pixels;

    bool operator==(const TrayPicture&) const = default;
};

/// A line of an item's menu; without a text it parts others.
struct TrayEntry {
    std::int32_t id = 0;  ///< From 1 on, and each one's own.
    QString text;
    bool isEnabled = true;

    bool operator==(const TrayEntry&) const = default;
};

/// What an item in the tray shows.
struct TrayContent {
    QString title;    ///< Of the item, for hosts that list items by name.
    QString toolTip;  ///< Below the title; may be empty.
    std::vector<TrayPicture> pictures = {};
    std::vector<TrayEntry> entries = {};

    bool operator==(const TrayContent&) const = default;
};

/// An item in the tray, as a status notifier with its menu, on a connection of its own: it goes with that. Main thread
/// only.
class TrayItem final : public QObject {
    Q_OBJECT

public:
    /// Hands the item to the tray's host. Nothing if there is no session bus.
    [[nodiscard]] static std::unique_ptr<TrayItem> make(TrayContent content);

    void show(TrayContent content);

    [[nodiscard]] const TrayContent& content() const { return m_content; }
    /// Counts what the menu was.
    [[nodiscard]] std::uint32_t menuRevision() const { return m_menuRevision; }

Q_SIGNALS:
    /// The item was pressed, at that place of the screen as the host tells it.
    void pressed(const QPoint& place);
    /// An entry of the menu was chosen.
    void chosen(std::int32_t entry);
    /// The host took the item, or did not, or the item's connection ended.
    void registered(bool isTaken);

private:
    TrayItem(std::unique_ptr<BusLink> link, TrayContent content);
    [[nodiscard]] bool publish();
    void tellMenu(const std::vector<TrayEntry>& before);

    std::unique_ptr<BusLink> m_link;
    TrayContent m_content;
    std::uint32_t m_menuRevision = 1;
};

}  // namespace vantiro
