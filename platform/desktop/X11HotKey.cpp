// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/X11HotKey.h"

#include "core/foundation/Log.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <span>
#include <utility>

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
// A field of its structures is called as no name may be in C++.
#define explicit explicitly
#include <xcb/xkb.h>
#undef explicit

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    constexpr std::chrono::milliseconds layoutSettles{50};

    /// Milliseconds between a held key's events; after a longer one its release was lost, as by a switch of terminals.
    constexpr xcb_timestamp_t longestPause = 2000;

    constexpr xcb_keysym_t keyR = 0x0072;
    constexpr xcb_keysym_t numLockKey = 0xff7f;
    constexpr xcb_keysym_t altKey = 0xffe9;
    constexpr xcb_keysym_t superKey = 0xffeb;
    /// Where R is on a keyboard whose layouts have no Latin letters.
    constexpr xcb_keycode_t codeOfR = 27;

    template <class Reply>
    struct FreeReply {
        void operator()(Reply* reply) const { std::free(reply); }
    };
    template <class Reply>
    using Owned = std::unique_ptr<Reply, FreeReply<Reply>>;

    struct FreeSymbols {
        void operator()(xcb_key_symbols_t* symbols) const { xcb_key_symbols_free(symbols); }
    };
    using Symbols = std::unique_ptr<xcb_key_symbols_t, FreeSymbols>;

    std::vector<xcb_keycode_t> codesOf(const Symbols& symbols, xcb_keysym_t key)
    {
        std::vector<xcb_keycode_t> codes;
        const Owned<xcb_keycode_t> found(xcb_key_symbols_get_keycode(symbols.get(), key));
        for (const xcb_keycode_t* code = found.get(); code != nullptr && *code != XCB_NO_SYMBOL; ++code) {
            codes.push_back(*code);
        }
        return codes;
    }

    /// Where a keyboard has several layouts, the first is the one that counts, unless it has no such letter.
    std::vector<xcb_keycode_t> codesOfLetter(const Symbols& symbols, xcb_keysym_t letter)
    {
        constexpr int firstColumn = 0;
        std::vector<xcb_keycode_t> codes = codesOf(symbols, letter);
        std::vector<xcb_keycode_t> first;
        std::ranges::copy_if(codes, std::back_inserter(first),
            [&](xcb_keycode_t code) { return xcb_key_symbols_get_keysym(symbols.get(), code, firstColumn) == letter; });
        return first.empty() ? codes : first;
    }

    /// Which of the eight modifiers each key is.
    class Modifiers {
    public:
        Modifiers(xcb_connection_t* connection, const Symbols& symbols)
            : m_symbols(symbols)
            , m_map(xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr))
        { }

        /// The modifier's mask, or `usual` if the key is none.
        [[nodiscard]] std::uint16_t of(xcb_keysym_t key, std::uint16_t usual) const
        {
            if (!m_map) {
                return usual;
            }
            const std::span codes(xcb_get_modifier_mapping_keycodes(m_map.get()),
                static_cast<std::size_t>(xcb_get_modifier_mapping_keycodes_length(m_map.get())));
            for (const xcb_keycode_t wanted : codesOf(m_symbols, key)) {
                for (std::size_t place = 0; place < codes.size(); ++place) {
                    if (codes[place] == wanted) {
                        return static_cast<std::uint16_t>(1U << (place / m_map->keycodes_per_modifier));
                    }
                }
            }
            return usual;
        }

    private:
        const Symbols& m_symbols;
        Owned<xcb_get_modifier_mapping_reply_t> m_map;
    };

}  // namespace

void X11HotKey::Disconnect::operator()(xcb_connection_t* connection) const
{
    xcb_disconnect(connection);
}

std::unique_ptr<X11HotKey> X11HotKey::make()
{
    Connection connection(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return nullptr;
    }
    return std::unique_ptr<X11HotKey>(new X11HotKey(std::move(connection)));
}

X11HotKey::X11HotKey(Connection connection)
    : m_connection(std::move(connection))
    , m_reads(xcb_get_file_descriptor(m_connection.get()), QSocketNotifier::Read)
{
    m_grabsAgain.setSingleShot(true);
    m_grabsAgain.setInterval(layoutSettles);
    connect(&m_grabsAgain, &QTimer::timeout, this, &X11HotKey::grab);
    connect(&m_reads, &QSocketNotifier::activated, this, &X11HotKey::serve);
    askForKeyboardEvents();
    grab();
}

X11HotKey::~X11HotKey() = default;

/// Asks to be told of other layouts, and to be spared the releases that a server makes up while a key repeats.
void X11HotKey::askForKeyboardEvents()
{
    xcb_connection_t* server = m_connection.get();
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(server, &xcb_xkb_id);
    if (extension == nullptr || extension->present == 0) {
        return;
    }
    const Owned<xcb_xkb_use_extension_reply_t> used(xcb_xkb_use_extension_reply(
        server, xcb_xkb_use_extension(server, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION), nullptr));
    if (!used || used->supported == 0) {
        return;
    }
    m_firstKeyboardEvent = extension->first_event;
    const Owned<xcb_xkb_per_client_flags_reply_t> flags(xcb_xkb_per_client_flags_reply(server,
        xcb_xkb_per_client_flags(server, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT,
            XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT, 0, 0, 0),
        nullptr));
    constexpr std::uint16_t wanted = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t parts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events(server, XCB_XKB_ID_USE_CORE_KBD, wanted, 0, wanted, parts, parts, nullptr);
}

void X11HotKey::grab()
{
    xcb_connection_t* server = m_connection.get();
    const Symbols symbols(xcb_key_symbols_alloc(server));
    if (!symbols) {
        return;
    }
    m_codes = codesOfLetter(symbols, keyR);
    if (m_codes.empty()) {
        m_codes = {codeOfR};
    }
    const Modifiers modifiers(server, symbols);
    const auto keys = static_cast<std::uint16_t>(
        XCB_MOD_MASK_CONTROL | modifiers.of(altKey, XCB_MOD_MASK_1) | modifiers.of(superKey, XCB_MOD_MASK_4));
    const std::uint16_t numLock = modifiers.of(numLockKey, 0);
    for (auto roots = xcb_setup_roots_iterator(xcb_get_setup(server)); roots.rem > 0; xcb_screen_next(&roots)) {
        xcb_ungrab_key(server, XCB_GRAB_ANY, roots.data->root, XCB_MOD_MASK_ANY);
        grabOn(roots.data->root, keys, numLock);
    }
    xcb_flush(server);
    // Events may have come along with the answers.
    QMetaObject::invokeMethod(this, &X11HotKey::serve, Qt::QueuedConnection);
}

void X11HotKey::grabOn(std::uint32_t root, std::uint16_t modifiers, std::uint16_t numLock)
{
    constexpr std::uint16_t capsLock = XCB_MOD_MASK_LOCK;
    for (const int locks : {0, +capsLock, +numLock, numLock | capsLock}) {
        for (const xcb_keycode_t code : m_codes) {
            xcb_grab_key(m_connection.get(), 0, root, static_cast<std::uint16_t>(modifiers | locks), code,
                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        }
    }
}

void X11HotKey::serve()
{
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) {
        // Its highest bit marks an event that another client made up, and which nobody pressed.
        const std::uint8_t kind = event->response_type;
        if (kind == 0) {
            const auto* refusal = reinterpret_cast<const xcb_generic_error_t*>(event.get());
            if (refusal->major_code == XCB_GRAB_KEY && !std::exchange(m_toldOfRefusal, true)) {
                logLine(u"The hot key belongs to another program."_s);
            }
        } else if (kind == XCB_KEY_PRESS) {
            const xcb_timestamp_t now = reinterpret_cast<const xcb_key_press_event_t*>(event.get())->time;
            const xcb_timestamp_t pause = now - std::exchange(m_lastDown, now);
            const bool isRepeat = std::exchange(m_isDown, true) && pause < longestPause;
            if (!isRepeat) {
                Q_EMIT pressed();
            }
        } else if (kind == XCB_KEY_RELEASE) {
            m_isDown = false;
        } else if (kind == XCB_MAPPING_NOTIFY || (m_firstKeyboardEvent != 0 && kind == m_firstKeyboardEvent)) {
            m_grabsAgain.start();
        }
    }
    if (xcb_connection_has_error(m_connection.get()) != 0) {
        m_reads.setEnabled(false);
        m_grabsAgain.stop();
        logLine(u"The hot key is gone with the screen."_s);
    }
}

}  // namespace vantiro
