// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/TrayMenu.h"

#include <algorithm>
#include <cstring>

#include <systemd/sd-bus.h>

namespace vantiro::TrayMenu {

namespace {

    constexpr std::int32_t rootId = 0;

    /// An underscore would be taken for the mark of a key.
    QByteArray label(const TrayEntry& entry)
    {
        return QString(entry.text).replace(u'_', QStringLiteral("__")).toUtf8();
    }

    int appendEntryProperties(sd_bus_message* message, const TrayEntry& entry)
    {
        if (entry.text.isEmpty()) {
            return sd_bus_message_append(message, "a{sv}", 1, "type", "s", "separator");
        }
        return sd_bus_message_append(
            message, "a{sv}", 2, "label", "s", label(entry).constData(), "enabled", "b", entry.isEnabled ? 1 : 0);
    }

    int appendRootProperties(sd_bus_message* message)
    {
        return sd_bus_message_append(message, "a{sv}", 1, "children-display", "s", "submenu");
    }

    const TrayEntry* find(const TrayItem& item, std::int32_t id)
    {
        const auto& entries = item.content().entries;
        const auto found = std::ranges::find(entries, id, &TrayEntry::id);
        return found == entries.end() ? nullptr : &*found;
    }

    int layout(sd_bus_message* call, void* userData, sd_bus_error* /*error*/)
    {
        const auto& item = *static_cast<const TrayItem*>(userData);
        std::int32_t parent = rootId;
        std::int32_t depth = -1;
        sd_bus_message_read(call, "ii", &parent, &depth);
        const TrayEntry* entry = parent == rootId ? nullptr : find(item, parent);
        if (parent != rootId && entry == nullptr) {
            return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "there is no entry %d", parent);
        }
        sd_bus_message* reply = nullptr;
        int result = sd_bus_message_new_method_return(call, &reply);
        if (result < 0) {
            return result;
        }
        const BusMessage owned(reply);
        sd_bus_message_append(reply, "u", item.menuRevision());
        sd_bus_message_open_container(reply, SD_BUS_TYPE_STRUCT, "ia{sv}av");
        sd_bus_message_append(reply, "i", parent);
        entry != nullptr ? appendEntryProperties(reply, *entry) : appendRootProperties(reply);
        sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, "v");
        if (entry == nullptr && depth != 0) {
            for (const TrayEntry& child : item.content().entries) {
                sd_bus_message_open_container(reply, SD_BUS_TYPE_VARIANT, "(ia{sv}av)");
                sd_bus_message_open_container(reply, SD_BUS_TYPE_STRUCT, "ia{sv}av");
                sd_bus_message_append(reply, "i", child.id);
                appendEntryProperties(reply, child);
                sd_bus_message_append(reply, "av", 0);
                sd_bus_message_close_container(reply);
                sd_bus_message_close_container(reply);
            }
        }
        sd_bus_message_close_container(reply);
        result = sd_bus_message_close_container(reply);
        return result < 0 ? result : sd_bus_send(nullptr, reply, nullptr);
    }

    int groupProperties(sd_bus_message* call, void* userData, sd_bus_error* /*error*/)
    {
        const auto& item = *static_cast<const TrayItem*>(userData);
        std::vector<std::int32_t> wanted;
        sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "i");
        std::int32_t id = 0;
        while (sd_bus_message_read(call, "i", &id) > 0) {
            wanted.push_back(id);
        }
        sd_bus_message* reply = nullptr;
        int result = sd_bus_message_new_method_return(call, &reply);
        if (result < 0) {
            return result;
        }
        const BusMessage owned(reply);
        sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, "(ia{sv})");
        for (const TrayEntry& entry : item.content().entries) {
            if (wanted.empty() || std::ranges::find(wanted, entry.id) != wanted.end()) {
                sd_bus_message_open_container(reply, SD_BUS_TYPE_STRUCT, "ia{sv}");
                sd_bus_message_append(reply, "i", entry.id);
                appendEntryProperties(reply, entry);
                sd_bus_message_close_container(reply);
            }
        }
        result = sd_bus_message_close_container(reply);
        return result < 0 ? result : sd_bus_send(nullptr, reply, nullptr);
    }

    int property(sd_bus_message* call, void* userData, sd_bus_error* /*error*/)
    {
        std::int32_t id = 0;
        const char* name = "";
        sd_bus_message_read(call, "is", &id, &name);
        const TrayEntry* entry = find(*static_cast<const TrayItem*>(userData), id);
        if (entry != nullptr && std::strcmp(name, "label") == 0) {
            return sd_bus_reply_method_return(call, "v", "s", label(*entry).constData());
        }
        if (entry != nullptr && std::strcmp(name, "enabled") == 0) {
            return sd_bus_reply_method_return(call, "v", "b", entry->isEnabled ? 1 : 0);
        }
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "%d has no %s", id, name);
    }

    void choose(TrayItem& item, std::int32_t id, const char* event)
    {
        const TrayEntry* entry = std::strcmp(event, "clicked") == 0 ? find(item, id) : nullptr;
        if (entry != nullptr && entry->isEnabled) {
            Q_EMIT item.chosen(id);
        }
    }

    int event(sd_bus_message* call, void* userData, sd_bus_error* /*error*/)
    {
        std::int32_t id = 0;
        const char* name = "";
        if (sd_bus_message_read(call, "is", &id, &name) > 0) {
            choose(*static_cast<TrayItem*>(userData), id, name);
        }
        return sd_bus_reply_method_return(call, "");
    }

    int eventGroup(sd_bus_message* call, void* userData, sd_bus_error* /*error*/)
    {
        sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "(isvu)");
        while (sd_bus_message_enter_container(call, SD_BUS_TYPE_STRUCT, "isvu") > 0) {
            std::int32_t id = 0;
            const char* name = "";
            sd_bus_message_read(call, "is", &id, &name);
            choose(*static_cast<TrayItem*>(userData), id, name);
            sd_bus_message_skip(call, "vu");
            sd_bus_message_exit_container(call);
        }
        return sd_bus_reply_method_return(call, "ai", 0);
    }

    int aboutToShow(sd_bus_message* call, void* /*userData*/, sd_bus_error* /*error*/)
    {
        return sd_bus_reply_method_return(call, "b", 0);
    }

    int aboutToShowGroup(sd_bus_message* call, void* /*userData*/, sd_bus_error* /*error*/)
    {
        return sd_bus_reply_method_return(call, "aiai", 0, 0);
    }

    int readProperty(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* name,
        sd_bus_message* reply, void* /*userData*/, sd_bus_error* /*error*/)
    {
        if (std::strcmp(name, "Version") == 0) {
            return sd_bus_message_append(reply, "u", 3);
        }
        if (std::strcmp(name, "IconThemePath") == 0) {
            return sd_bus_message_append(reply, "as", 0);
        }
        return sd_bus_message_append(reply, "s", std::strcmp(name, "Status") == 0 ? "normal" : "ltr");
    }

// The macros of the C header convert and cast as they like.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
    const sd_bus_vtable menuTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("Version", "u", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("TextDirection", "s", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("Status", "s", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("IconThemePath", "as", readProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_METHOD("GetLayout", "iias", "u(ia{sv}av)", layout, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("GetGroupProperties", "aias", "a(ia{sv})", groupProperties, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("GetProperty", "is", "v", property, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Event", "isvu", "", event, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("EventGroup", "a(isvu)", "ai", eventGroup, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("AboutToShow", "i", "b", aboutToShow, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("AboutToShowGroup", "ai", "aiai", aboutToShowGroup, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_SIGNAL("ItemsPropertiesUpdated", "a(ia{sv})a(ias)", 0),
        SD_BUS_SIGNAL("LayoutUpdated", "ui", 0),
        SD_BUS_SIGNAL("ItemActivationRequested", "iu", 0),
        SD_BUS_VTABLE_END,
    };
#pragma GCC diagnostic pop

}  // namespace

const sd_bus_vtable* table()
{
    return menuTable;
}

void tellWords(sd_bus* bus, std::span<const TrayEntry> before, std::span<const TrayEntry> now)
{
    sd_bus_message* signal = nullptr;
    if (sd_bus_message_new_signal(bus, &signal, path, interface, "ItemsPropertiesUpdated") < 0) {
        return;
    }
    const BusMessage owned(signal);
    sd_bus_message_open_container(signal, SD_BUS_TYPE_ARRAY, "(ia{sv})");
    for (std::size_t index = 0; index < now.size(); ++index) {
        if (before[index] != now[index]) {
            sd_bus_message_open_container(signal, SD_BUS_TYPE_STRUCT, "ia{sv}");
            sd_bus_message_append(signal, "i", now[index].id);
            appendEntryProperties(signal, now[index]);
            sd_bus_message_close_container(signal);
        }
    }
    sd_bus_message_close_container(signal);
    sd_bus_message_append(signal, "a(ias)", 0);
    sd_bus_send(bus, signal, nullptr);
}

void tellLayout(sd_bus* bus, std::uint32_t revision)
{
    sd_bus_emit_signal(bus, path, interface, "LayoutUpdated", "ui", revision, rootId);
}

}  // namespace vantiro::TrayMenu
