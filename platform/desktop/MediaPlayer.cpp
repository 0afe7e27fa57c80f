// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/MediaPlayer.h"

#include "platform/desktop/ApplicationId.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <systemd/sd-bus.h>
#include <unistd.h>

namespace vantiro {

namespace {

    constexpr const char* playerPath = "/org/mpris/MediaPlayer2";
    constexpr const char* rootInterface = "org.mpris.MediaPlayer2";
    constexpr const char* playerInterface = "org.mpris.MediaPlayer2.Player";
    constexpr const char* playerName = "org.mpris.MediaPlayer2.vantiro";

    int readRoot(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* property,
        sd_bus_message* reply, void* /*player*/, sd_bus_error* /*error*/)
    {
        const auto is = [property](const char* name) { return std::strcmp(property, name) == 0; };
        if (is("Identity")) {
            return sd_bus_message_append(reply, "s", "Vantiro");
        }
        if (is("DesktopEntry")) {
            return sd_bus_message_append(reply, "s", applicationId);
        }
        if (is("SupportedUriSchemes") || is("SupportedMimeTypes")) {
            return sd_bus_message_append(reply, "as", 0);
        }
        return sd_bus_message_append(reply, "b", is("CanQuit") || is("CanRaise") ? 1 : 0);
    }

    int appendText(sd_bus_message* reply, const char* key, const QString& text)
    {
        return text.isEmpty() ? 0 : sd_bus_message_append(reply, "{sv}", key, "s", text.toUtf8().constData());
    }

    int appendMetadata(sd_bus_message* reply, const MediaPlayer& player)
    {
        const MediaContent& content = player.content();
        sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, "{sv}");
        sd_bus_message_append(reply, "{sv}", "mpris:trackid", "o", player.trackPath().toUtf8().constData());
        sd_bus_message_append(reply, "{sv}", "mpris:length", "x", content.length);
        appendText(reply, "mpris:artUrl", content.artUrl);
        appendText(reply, "xesam:title", content.title);
        appendText(reply, "xesam:album", content.album);
        if (!content.artist.isEmpty()) {
            sd_bus_message_append(reply, "{sv}", "xesam:artist", "as", 1, content.artist.toUtf8().constData());
        }
        return sd_bus_message_close_container(reply);
    }

    int readPlayer(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* property,
        sd_bus_message* reply, void* data, sd_bus_error* /*error*/)
    {
        const auto& player = *static_cast<const MediaPlayer*>(data);
        const auto is = [property](const char* name) { return std::strcmp(property, name) == 0; };
        if (is("PlaybackStatus")) {
            const char* moving = player.content().isPaused ? "Paused" : "Playing";
            return sd_bus_message_append(reply, "s", player.isThere() ? moving : "Stopped");
        }
        if (is("Metadata")) {
            return appendMetadata(reply, player);
        }
        if (is("Position")) {
            return sd_bus_message_append(reply, "x", player.position());
        }
        if (is("CanSeek")) {
            return sd_bus_message_append(reply, "b", player.content().length > 0 ? 1 : 0);
        }
        if (is("CanPlay") || is("CanPause") || is("CanControl")) {
            return sd_bus_message_append(reply, "b", 1);
        }
        if (is("CanGoNext") || is("CanGoPrevious")) {
            return sd_bus_message_append(reply, "b", 0);
        }
        // Rate, its bounds, and Volume.
        return sd_bus_message_append(reply, "d", 1.0);
    }

    /// The speed and the volume are what they are.
    int keepValue(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
        sd_bus_message* value, void* /*player*/, sd_bus_error* /*error*/)
    {
        return std::min(sd_bus_message_skip(value, "d"), 0);
    }

    template <void (MediaPlayer::*Wanted)()>
    int tell(sd_bus_message* call, void* player, sd_bus_error* /*error*/)
    {
        Q_EMIT(static_cast<MediaPlayer*>(player)->*Wanted)();
        return sd_bus_reply_method_return(call, "");
    }

    int passOver(sd_bus_message* call, void* /*player*/, sd_bus_error* /*error*/)
    {
        return sd_bus_reply_method_return(call, "");
    }

    int seekBy(sd_bus_message* call, void* data, sd_bus_error* /*error*/)
    {
        auto& player = *static_cast<MediaPlayer*>(data);
        std::int64_t offset = 0;
        const int result = sd_bus_message_read(call, "x", &offset);
        if (result < 0) {
            return result;
        }
        const std::int64_t length = player.content().length;
        if (length > 0) {
            // Held to the length first, so that the sum is a number.
            Q_EMIT player.seekWanted(
                std::clamp(player.position() + std::clamp(offset, -length, length), std::int64_t{0}, length));
        }
        return sd_bus_reply_method_return(call, "");
    }

    int setPosition(sd_bus_message* call, void* data, sd_bus_error* /*error*/)
    {
        auto& player = *static_cast<MediaPlayer*>(data);
        const char* track = nullptr;
        std::int64_t position = 0;
        const int result = sd_bus_message_read(call, "ox", &track, &position);
        if (result < 0) {
            return result;
        }
        const std::int64_t length = player.content().length;
        // What was meant for another track, or is none of this one's, comes too late.
        if (length > 0 && player.trackPath() == QLatin1StringView(track) && position >= 0 && position <= length) {
            Q_EMIT player.seekWanted(position);
        }
        return sd_bus_reply_method_return(call, "");
    }

    int refuse(sd_bus_message* call, void* /*player*/, sd_bus_error* /*error*/)
    {
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_NOT_SUPPORTED, "Vantiro plays its own takes only.");
    }

// The macros of the C header convert and cast as they like.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
    const sd_bus_vtable rootTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("CanQuit", "b", readRoot, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("CanRaise", "b", readRoot, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("HasTrackList", "b", readRoot, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("Identity", "s", readRoot, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("DesktopEntry", "s", readRoot, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("SupportedUriSchemes", "as", readRoot, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("SupportedMimeTypes", "as", readRoot, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_METHOD("Raise", "", "", tell<&MediaPlayer::raiseWanted>, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Quit", "", "", tell<&MediaPlayer::quitWanted>, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    const sd_bus_vtable playerTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("PlaybackStatus", "s", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
        SD_BUS_PROPERTY("Metadata", "a{sv}", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
        SD_BUS_PROPERTY("Position", "x", readPlayer, 0, 0),
        SD_BUS_PROPERTY("CanSeek", "b", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
        SD_BUS_PROPERTY("CanPlay", "b", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("CanPause", "b", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("CanControl", "b", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("CanGoNext", "b", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("CanGoPrevious", "b", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("MinimumRate", "d", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("MaximumRate", "d", readPlayer, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_WRITABLE_PROPERTY("Rate", "d", readPlayer, keepValue, 0, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_WRITABLE_PROPERTY("Volume", "d", readPlayer, keepValue, 0, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("PlayPause", "", "", tell<&MediaPlayer::toggleWanted>, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Play", "", "", tell<&MediaPlayer::playWanted>, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Pause", "", "", tell<&MediaPlayer::pauseWanted>, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Stop", "", "", tell<&MediaPlayer::stopWanted>, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Next", "", "", passOver, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Previous", "", "", passOver, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Seek", "x", "", seekBy, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("SetPosition", "ox", "", setPosition, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("OpenUri", "s", "", refuse, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_SIGNAL("Seeked", "x", 0),
        SD_BUS_VTABLE_END,
    };
#pragma GCC diagnostic pop

}  // namespace

MediaPlayer::MediaPlayer(BusLink* session, std::function<std::int64_t()> position)
    : m_session(session)
    , m_position(std::move(position))
{ }

MediaPlayer::~MediaPlayer()
{
    releaseName();
    sd_bus_slot_unref(m_player);
    sd_bus_slot_unref(m_root);
}

std::int64_t MediaPlayer::position() const
{
    return std::clamp(m_position(), std::int64_t{0}, std::max(m_content.length, std::int64_t{0}));
}

QString MediaPlayer::trackPath() const
{
    return QStringLiteral("/org/vantiro/take/%1").arg(m_content.track);
}

void MediaPlayer::show(const std::optional<MediaContent>& content)
{
    if (m_session == nullptr) {
        return;
    }
    const auto tellOf = [this](const char* property) {
        sd_bus_emit_properties_changed(m_session->bus(), playerPath, playerInterface, property, nullptr);
    };
    if (!content) {
        if (std::exchange(m_isThere, false)) {
            tellOf("PlaybackStatus");
        }
        releaseName();
        return;
    }
    const MediaContent before = std::exchange(m_content, *content);
    if (!std::exchange(m_isThere, true)) {
        publish();
        return;
    }
    if (before.isPaused != m_content.isPaused) {
        tellOf("PlaybackStatus");
    }
    if ((before.length > 0) != (m_content.length > 0)) {
        tellOf("CanSeek");
    }
    MediaContent same = before;
    same.isPaused = m_content.isPaused;
    if (same != m_content) {
        tellOf("Metadata");
    }
    m_session->wake();
}

void MediaPlayer::tellSought()
{
    if (m_isThere) {
        sd_bus_emit_signal(m_session->bus(), playerPath, playerInterface, "Seeked", "x", position());
        m_session->wake();
    }
}

void MediaPlayer::publish()
{
    // They stay once they are there: without the name nobody comes to them.
    if (m_root == nullptr
        && (sd_bus_add_object_vtable(m_session->bus(), &m_root, playerPath, rootInterface, rootTable, this) < 0
            || sd_bus_add_object_vtable(m_session->bus(), &m_player, playerPath, playerInterface, playerTable, this)
                < 0)) {
        return;
    }
    requestName(playerName);
}

void MediaPlayer::requestName(const QByteArray& name)
{
    constexpr std::uint32_t doNotQueue = 4;
    constexpr std::uint32_t exists = 3;
    const BusMessage call =
        m_session->newRequest({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName"});
    if (!call || sd_bus_message_append(call.get(), "su", name.constData(), doNotQueue) < 0) {
        return;
    }
    m_name = name;
    m_session->ask(call, [this, appearance = ++m_appearance](sd_bus_message* answer) {
        std::uint32_t result = 0;
        if (answer != nullptr && appearance == m_appearance && sd_bus_message_read(answer, "u", &result) > 0
            && result == exists && m_name == playerName) {
            // Somebody else's Vantiro plays on the same bus.
            requestName(playerName + QByteArray(".instance") + QByteArray::number(::getpid()));
        }
    });
}

void MediaPlayer::releaseName()
{
    ++m_appearance;
    if (m_name.isEmpty()) {
        return;
    }
    const BusMessage call =
        m_session->newRequest({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName"});
    if (call && sd_bus_message_append(call.get(), "s", m_name.constData()) >= 0) {
        sd_bus_message_set_expect_reply(call.get(), 0);
        sd_bus_send(m_session->bus(), call.get(), nullptr);
        m_session->wake();
    }
    m_name.clear();
}

}  // namespace vantiro
