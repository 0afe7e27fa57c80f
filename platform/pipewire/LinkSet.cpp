// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/LinkSet.h"

#include <algorithm>
#include <string>

namespace vantiro {

class LinkSet::Link {
public:
    Link(pw_core* core, PortPair ports)
    {
        const std::string output = std::to_string(ports.output);
        const std::string input = std::to_string(ports.input);
        const spa_dict_item items[] = {
            SPA_DICT_ITEM_INIT(PW_KEY_LINK_OUTPUT_PORT, output.c_str()),
            SPA_DICT_ITEM_INIT(PW_KEY_LINK_INPUT_PORT, input.c_str()),
            SPA_DICT_ITEM_INIT(PW_KEY_OBJECT_LINGER, "false"),
        };
        const spa_dict properties = SPA_DICT_INIT_ARRAY(items);
        m_proxy = static_cast<pw_proxy*>(
            pw_core_create_object(core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties, 0));
        if (m_proxy != nullptr) {
            static const pw_proxy_events events = [] {
                pw_proxy_events table{};
                table.version = PW_VERSION_PROXY_EVENTS;
                table.removed = [](void* data) { static_cast<Link*>(data)->m_gone = true; };
                table.error = [](void* data, int, int, const char*) { static_cast<Link*>(data)->m_gone = true; };
                return table;
            }();
            pw_proxy_add_listener(m_proxy, &m_hook, &events, this);
        }
    }

    ~Link()
    {
        if (m_proxy != nullptr) {
            spa_hook_remove(&m_hook);
            pw_proxy_destroy(m_proxy);
        }
    }

    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    [[nodiscard]] bool isGone() const { return m_proxy == nullptr || m_gone; }

private:
    pw_proxy* m_proxy = nullptr;
    spa_hook m_hook{};
    bool m_gone = false;
};

LinkSet::LinkSet(GraphMirror& mirror) : m_mirror(mirror) { }

LinkSet::~LinkSet()
{
    clear();
}

bool LinkSet::hold(const std::vector<PortPair>& wanted)
{
    bool changed = std::erase_if(m_links, [&](const auto& entry) {
        return entry.second->isGone() || std::ranges::find(wanted, entry.first) == wanted.end();
    }) > 0;
    for (const PortPair& ports : wanted) {
        if (m_links.contains(ports) || m_mirror.core() == nullptr) {
            continue;
        }
        m_links.emplace(ports, std::make_unique<Link>(m_mirror.core(), ports));
        changed = true;
    }
    return changed;
}

void LinkSet::clear()
{
    m_links.clear();
}

}  // namespace vantiro
