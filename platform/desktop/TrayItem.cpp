// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/TrayItem.h"

#include "platform/desktop/ApplicationId.h"
#include "platform/desktop/TrayMenu.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <systemd/sd-bus.h>

namespace vantiro {

namespace {

    constexpr const char* itemPath = "/StatusNotifierItem";
    constexpr const char* itemInterface = "org.kde.StatusNotifierItem";

    int appendPictures(sd_bus_message* reply, const std::vector<TrayPicture>& pictures)
    {
        int result = sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, "(iiay)");
        for (const TrayPicture& picture : pictures) {
            if (result < 0) {
                return result;
            }
            sd_bus_message_open_container(reply, SD_BUS_TYPE_STRUCT, "iiay");
            sd_bus_message_append(reply, "ii", picture.side, picture.side);
            sd_bus_message_append_array(
                reply, SD_BUS_TYPE_BYTE, picture.pixels.constData(), static_cast<size_t>(picture.pixels.size()));
            result = sd_bus_message_close_container(reply);
        }
        return result < 0 ? result : sd_bus_message_close_container(reply);
    }

    int readProperty(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* property,
        sd_bus_message* reply, void* item, sd_bus_error* /*error*/)
    {
        const TrayContent& content = static_cast<const TrayItem*>(item)->content();
        const auto is = [property](const char* name) { return std::strcmp(property, name) == 0; };
        if (is("IconPixmap")) {
            return appendPictures(reply, content.pictures);
        }
        if (is("ToolTip")) {
            sd_bus_message_open_container(reply, SD_BUS_TYPE_STRUCT, "sa(iiay)ss");
            sd_bus_message_append(reply, "s", "");
            appendPictures(reply, {});
            sd_bus_message_append(
                reply, "ss", content.title.toUtf8().constData(), content.toolTip.toUtf8().constData());
            return sd_bus_message_close_container(reply);
        }
        if (is("Menu")) {
            return sd_bus_message_append(reply, "o", TrayMenu::path);
        }
        if (is("WindowId")) {
            return sd_bus_message_append(reply, "i", 0);
        }
        if (is("ItemIsMenu")) {
            return sd_bus_message_append(reply, "b", 0);
        }
        const QByteArray text = is("Id") ? QByteArray(applicationId)
            : is("Category")             ? QByteArray("ApplicationStatus")
            : is("Status")               ? QByteArray("Active")
            : is("Title")                ? content.title.toUtf8()
                                         : QByteArray();
        return sd_bus_message_append(reply, "s", text.constData());
    }

    int press(sd_bus_message* call, void* item, sd_bus_error* /*error*/)
    {
        std::int32_t x = 0;
        std::int32_t y = 0;
        sd_bus_message_read(call, "ii", &x, &y);
        Q_EMIT static_cast<TrayItem*>(item)->pressed({x, y});
        return sd_bus_reply_method_return(call, "");
    }

    int ignore(sd_bus_message* call, void* /*item*/, sd_bus_error* /*error*/)
    {
        return sd_bus_reply_method_return(call, "");
    }

// The macros of the C header convert and cast as they like.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
    const sd_bus_vtable itemTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("Category", "s", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("Id", "s", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("Title", "s", readProperty, 0, 0),
        SD_BUS_PROPERTY("Status", "s", readProperty, 0, 0),
        SD_BUS_PROPERTY("WindowId", "i", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("IconThemePath", "s", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("IconName", "s", readProperty, 0, 0),
        SD_BUS_PROPERTY("IconPixmap", "a(iiay)", readProperty, 0, 0),
        SD_BUS_PROPERTY("ToolTip", "(sa(iiay)ss)", readProperty, 0, 0),
        SD_BUS_PROPERTY("ItemIsMenu", "b", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("Menu", "o", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_METHOD("Activate", "ii", "", press, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("SecondaryActivate", "ii", "", press, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("ContextMenu", "ii", "", ignore, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Scroll", "is", "", ignore, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_SIGNAL("NewTitle", "", 0),
        SD_BUS_SIGNAL("NewIcon", "", 0),
        SD_BUS_SIGNAL("NewToolTip", "", 0),
        SD_BUS_SIGNAL("NewStatus", "s", 0),
        SD_BUS_VTABLE_END,
    };
#pragma GCC diagnostic pop

}  // namespace

std::unique_ptr<TrayItem> TrayItem::make(TrayContent content)
{
    auto link = BusLink::open(BusKind::session);
    if (!link) {
        return nullptr;
    }
    std::unique_ptr<TrayItem> item(new TrayItem(std::move(link), std::move(content)));
    return item->publish() ? std::move(item) : nullptr;
}

TrayItem::TrayItem(std::unique_ptr<BusLink> link, TrayContent content)
    : m_link(std::move(link))
    , m_content(std::move(content))
{
    connect(m_link.get(), &BusLink::closed, this, [this] { Q_EMIT registered(false); });
}

bool TrayItem::publish()
{
    if (sd_bus_add_object_vtable(m_link->bus(), nullptr, itemPath, itemInterface, itemTable, this) < 0
        || sd_bus_add_object_vtable(
               m_link->bus(), nullptr, TrayMenu::path, TrayMenu::interface, TrayMenu::table(), this)
            < 0) {
        return false;
    }
    const BusMessage call = m_link->newQuestion({"org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
        "org.kde.StatusNotifierWatcher", "RegisterStatusNotifierItem"});
    if (!call || sd_bus_message_append(call.get(), "s", itemPath) < 0) {
        return false;
    }
    m_link->ask(call, [this](sd_bus_message* answer) { Q_EMIT registered(answer != nullptr); });
    return true;
}

void TrayItem::show(TrayContent content)
{
    const TrayContent before = std::exchange(m_content, std::move(content));
    const auto tell = [this](
                          const char* what) { sd_bus_emit_signal(m_link->bus(), itemPath, itemInterface, what, ""); };
    if (before.pictures != m_content.pictures) {
        tell("NewIcon");
    }
    if (before.title != m_content.title) {
        tell("NewTitle");
    }
    if (before.title != m_content.title || before.toolTip != m_content.toolTip) {
        tell("NewToolTip");
    }
    if (before.entries != m_content.entries) {
        tellMenu(before.entries);
    }
    m_link->wake();
}

void TrayItem::tellMenu(const std::vector<TrayEntry>& before)
{
    // A menu that is up keeps its place while only words change.
    if (std::ranges::equal(before, m_content.entries, {}, &TrayEntry::id, &TrayEntry::id)) {
        TrayMenu::tellWords(m_link->bus(), before, m_content.entries);
        return;
    }
    ++m_menuRevision;
    TrayMenu::tellLayout(m_link->bus(), m_menuRevision);
}

}  // namespace vantiro
