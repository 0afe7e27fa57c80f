// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/HotKey.h"

#include <QSocketNotifier>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <vector>

struct xcb_connection_t;

namespace vantiro {

/// The hot key grabbed on every screen of an X server, on a connection of its own. What is locked (Caps Lock, Num Lock)
/// makes no difference, and another layout of the keyboard is followed. Where another program has it there is none, and
/// after the loss of the server there is none any more: the log says so, and nobody else is told.
class X11HotKey final : public HotKey {
    Q_OBJECT

public:
    /// On the server that DISPLAY names; nothing if there is none.
    [[nodiscard]] static std::unique_ptr<X11HotKey> make();
    ~X11HotKey() override;

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    explicit X11HotKey(Connection connection);
    void askForKeyboardEvents();
    void grab();
    void grabOn(std::uint32_t root, std::uint16_t modifiers, std::uint16_t numLock);
    void serve();

    Connection m_connection;
    QSocketNotifier m_reads;
    QTimer m_grabsAgain;  ///< A layout comes in many changes.
    std::vector<std::uint8_t> m_codes;
    std::uint8_t m_firstKeyboardEvent = 0;  ///< The extension's; 0 without it.
    bool m_isDown = false;
    std::uint32_t m_lastDown = 0;  ///< Milliseconds of the server's clock.
    bool m_toldOfRefusal = false;
};

}  // namespace vantiro
