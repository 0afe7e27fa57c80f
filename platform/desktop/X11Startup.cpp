// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/X11Startup.h"

#include <QByteArray>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace vantiro::X11Startup {

namespace {

    using namespace Qt::StringLiterals;

    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    xcb_atom_t atom(const Connection& connection, const QByteArray& name)
    {
        xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection.get(),
            xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.constData()), nullptr);
        // 0 is no atom.
        const xcb_atom_t found = reply != nullptr ? reply->atom : xcb_atom_t{0};
        std::free(reply);
        return found;
    }

    void send(
        const Connection& connection, xcb_window_t root, std::uint32_t mask, const xcb_client_message_event_t& event)
    {
        xcb_send_event(connection.get(), 0, root, mask, reinterpret_cast<const char*>(&event));
    }

    void activate(const Connection& connection, xcb_window_t root, xcb_window_t window, std::uint32_t time)
    {
        constexpr std::uint32_t isApplication = 1;
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom(connection, "_NET_ACTIVE_WINDOW");
        event.data.data32[0] = isApplication;
        event.data.data32[1] = time;
        send(connection, root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, event);
    }

    /// Texts for everybody go in pieces of 20 bytes, with their final zero.
    void tellEverybody(const Connection& connection, xcb_window_t root, xcb_window_t window, QByteArray text)
    {
        constexpr qsizetype pieceSize = 20;
        text.append('\0');
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 8;
        event.window = window;
        event.type = atom(connection, "_NET_STARTUP_INFO_BEGIN");
        const xcb_atom_t next = atom(connection, "_NET_STARTUP_INFO");
        for (qsizetype at = 0; at < text.size(); at += pieceSize) {
            std::ranges::fill(event.data.data8, std::uint8_t{0});
            std::ranges::copy(text.mid(at, pieceSize), event.data.data8);
            send(connection, root, XCB_EVENT_MASK_PROPERTY_CHANGE, event);
            event.type = next;
        }
    }

}  // namespace

std::uint32_t timeOf(const QString& startupId)
{
    const QString mark = u"_TIME"_s;
    const qsizetype at = startupId.lastIndexOf(mark);
    return at < 0 ? 0 : startupId.mid(at + mark.size()).toUInt();
}

void finish(std::uint32_t window, const QString& startupId, Front front)
{
    int number = 0;
    const Connection connection(xcb_connect(nullptr, &number));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    for (; screens.rem > 1 && number > 0; --number) {
        xcb_screen_next(&screens);
    }
    const xcb_window_t root = screens.data->root;
    if (const std::uint32_t time = timeOf(startupId); time != 0 && front == Front::wanted) {
        activate(connection, root, window, time);
    }
    QString quoted = startupId;
    quoted.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s);
    tellEverybody(connection, root, window, u"remove: ID=\"%1\""_s.arg(quoted).toUtf8());
    // All of it has arrived once anything is answered.
    std::free(xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
}

}  // namespace vantiro::X11Startup
