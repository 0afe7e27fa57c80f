// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/GraphObject.h"

#include "platform/pipewire/GraphMirror.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <pipewire/extensions/metadata.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <spa/param/route.h>
#include <spa/pod/iter.h>
#include <spa/pod/parser.h>

#include <array>
#include <cstring>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    QString text(const spa_dict& properties, const char* key)
    {
        return QString::fromUtf8(spa_dict_lookup(&properties, key));
    }

    std::uint32_t number(const spa_dict& properties, const char* key)
    {
        return text(properties, key).toUInt();
    }

    /// A proxy with its listener; destroys both.
    class Proxy {
    public:
        Proxy(pw_registry* registry, std::uint32_t id, const char* type, std::uint32_t version)
            : m_proxy(static_cast<pw_proxy*>(pw_registry_bind(registry, id, type, version, 0)))
        { }
        ~Proxy()
        {
            if (m_proxy != nullptr) {
                spa_hook_remove(&m_hook);
                pw_proxy_destroy(m_proxy);
            }
        }

        Proxy(const Proxy&) = delete;
        Proxy& operator=(const Proxy&) = delete;

        template <class Events>
        void listen(const Events& events, void* data)
        {
            if (m_proxy != nullptr) {
                pw_proxy_add_object_listener(m_proxy, &m_hook, &events, data);
            }
        }
        template <class Interface>
        [[nodiscard]] Interface* as() const
        {
            return reinterpret_cast<Interface*>(m_proxy);
        }

    private:
        pw_proxy* m_proxy;
        spa_hook m_hook{};
    };

    /// The one rate that a format allows.
    std::optional<double> fixedRate(const spa_pod& format)
    {
        const spa_pod_prop* rate = spa_pod_find_prop(&format, nullptr, SPA_FORMAT_AUDIO_rate);
        if (rate == nullptr) {
            return std::nullopt;
        }
        std::uint32_t count = 0;
        std::uint32_t choice = SPA_CHOICE_None;
        const spa_pod* values = spa_pod_get_values(&rate->value, &count, &choice);
        std::int32_t hertz = 0;
        if (choice != SPA_CHOICE_None || spa_pod_get_int(values, &hertz) < 0 || hertz <= 0) {
            return std::nullopt;
        }
        return hertz;
    }

    /// Which of the wanted parameters an object announces.
    template <std::size_t Count>
    std::vector<std::uint32_t> offered(
        const spa_param_info* infos, std::uint32_t count, const std::array<std::uint32_t, Count>& wanted)
    {
        std::vector<std::uint32_t> found;
        for (std::uint32_t index = 0; index < count; ++index) {
            if (std::ranges::find(wanted, infos[index].id) != wanted.end()
                && (infos[index].flags & SPA_PARAM_INFO_READ) != 0) {
                found.push_back(infos[index].id);
            }
        }
        return found;
    }

    class NodeObject final : public GraphObject {
    public:
        NodeObject(GraphMirror& mirror, pw_registry* registry, std::uint32_t id, const spa_dict& properties)
            : GraphObject(id, properties)
            , m_mirror(mirror)
            , m_proxy(registry, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE)
        {
            m_node.id = id;
            m_node.serial = m_serial;
            merge(m_node.properties, &properties);
            static const pw_node_events events = [] {
                pw_node_events table{};
                table.version = PW_VERSION_NODE_EVENTS;
                table.info = [](void* data, const pw_node_info* info) { static_cast<NodeObject*>(data)->info(*info); };
                table.param = [](void* data, int, std::uint32_t param, std::uint32_t index, std::uint32_t,
                                  const spa_pod* pod) { static_cast<NodeObject*>(data)->param(param, index, pod); };
                return table;
            }();
            m_proxy.listen(events, this);
        }

        void contribute(GraphSnapshot& graph) const override { graph.nodes.push_back(m_node); }

    private:
        void info(const pw_node_info& info)
        {
            merge(m_node.properties, info.props);
            m_node.inputPorts = info.n_input_ports;
            m_node.outputPorts = info.n_output_ports;
            m_node.running = info.state == PW_NODE_STATE_RUNNING;
            const bool isDevice = m_node.properties.value(u"media.class"_s).startsWith("Audio/"_L1);
            if ((info.change_mask & PW_NODE_CHANGE_MASK_PARAMS) != 0 && isDevice) {
                constexpr std::array<std::uint32_t, 2> wanted{SPA_PARAM_EnumFormat, SPA_PARAM_Format};
                std::vector<std::uint32_t> ids = offered(info.params, info.n_params, wanted);
                if (std::ranges::find(ids, std::uint32_t{SPA_PARAM_Format}) == ids.end()) {
                    m_node.format.reset();
                }
                if (!ids.empty() && ids != m_subscribed) {
                    pw_node_subscribe_params(m_proxy.as<pw_node>(), ids.data(), static_cast<std::uint32_t>(ids.size()));
                    m_subscribed = std::move(ids);
                }
            }
            m_mirror.markChanged();
        }

        void param(std::uint32_t param, std::uint32_t index, const spa_pod* pod)
        {
            if (pod == nullptr) {
                return;
            }
            const std::optional<double> rate = fixedRate(*pod);
            if (param == SPA_PARAM_Format) {
                m_node.format = rate;
            } else if (param == SPA_PARAM_EnumFormat) {
                // Several formats make a fixed rate only if all of them agree.
                m_node.fixedFormat = index == 0 || m_node.fixedFormat == rate ? rate : std::nullopt;
            }
            m_mirror.markChanged();
        }

        GraphMirror& m_mirror;
        GraphNode m_node;
        std::vector<std::uint32_t> m_subscribed;
        Proxy m_proxy;
    };

    class PortObject final : public GraphObject {
    public:
        PortObject(std::uint32_t id, const spa_dict& properties) : GraphObject(id, properties)
        {
            m_port.id = id;
            m_port.node = number(properties, PW_KEY_NODE_ID);
            m_port.index = number(properties, PW_KEY_PORT_ID);
            m_port.isInput = text(properties, PW_KEY_PORT_DIRECTION) == "in"_L1;
            m_port.isMonitor = text(properties, PW_KEY_PORT_MONITOR) == "true"_L1;
            m_port.isAudio = text(properties, PW_KEY_FORMAT_DSP).contains("audio"_L1);
        }

        void contribute(GraphSnapshot& graph) const override { graph.ports.push_back(m_port); }

    private:
        GraphPort m_port;
    };

    class LinkObject final : public GraphObject {
    public:
        LinkObject(std::uint32_t id, const spa_dict& properties) : GraphObject(id, properties)
        {
            m_link.id = id;
            m_link.outputNode = number(properties, PW_KEY_LINK_OUTPUT_NODE);
            m_link.outputPort = number(properties, PW_KEY_LINK_OUTPUT_PORT);
            m_link.inputNode = number(properties, PW_KEY_LINK_INPUT_NODE);
            m_link.inputPort = number(properties, PW_KEY_LINK_INPUT_PORT);
        }

        void contribute(GraphSnapshot& graph) const override { graph.links.push_back(m_link); }

    private:
        GraphLink m_link;
    };

    class CardObject final : public GraphObject {
    public:
        CardObject(GraphMirror& mirror, pw_registry* registry, std::uint32_t id, const spa_dict& properties)
            : GraphObject(id, properties)
            , m_mirror(mirror)
            , m_proxy(registry, id, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE)
        {
            m_card.id = id;
            merge(m_card.properties, &properties);
            static const pw_device_events events = [] {
                pw_device_events table{};
                table.version = PW_VERSION_DEVICE_EVENTS;
                table.info = [](void* data, const pw_device_info* info) {
                    static_cast<CardObject*>(data)->info(*info);
                };
                table.param = [](void* data, int, std::uint32_t, std::uint32_t index, std::uint32_t,
                                  const spa_pod* pod) { static_cast<CardObject*>(data)->route(index, pod); };
                return table;
            }();
            m_proxy.listen(events, this);
        }

        void contribute(GraphSnapshot& graph) const override { graph.cards.push_back(m_card); }

    private:
        void info(const pw_device_info& info)
        {
            merge(m_card.properties, info.props);
            if ((info.change_mask & PW_DEVICE_CHANGE_MASK_PARAMS) != 0 && !m_subscribed) {
                constexpr std::array<std::uint32_t, 1> wanted{SPA_PARAM_Route};
                std::vector<std::uint32_t> ids = offered(info.params, info.n_params, wanted);
                if (!ids.empty()) {
                    pw_device_subscribe_params(
                        m_proxy.as<pw_device>(), ids.data(), static_cast<std::uint32_t>(ids.size()));
                    m_subscribed = true;
                }
            }
            m_mirror.markChanged();
        }

        void route(std::uint32_t index, const spa_pod* pod)
        {
            if (index == 0) {
                m_card.routes.clear();
            }
            std::uint32_t direction = SPA_DIRECTION_OUTPUT;
            std::int32_t device = -1;
            spa_pod* info = nullptr;
            if (pod == nullptr
                || spa_pod_parse_object(pod, SPA_TYPE_OBJECT_ParamRoute, nullptr, SPA_PARAM_ROUTE_direction,
                       SPA_POD_Id(&direction), SPA_PARAM_ROUTE_device, SPA_POD_OPT_Int(&device), SPA_PARAM_ROUTE_info,
                       SPA_POD_OPT_Pod(&info))
                    < 0) {
                return;
            }
            m_card.routes.push_back(
                {.isInput = direction == SPA_DIRECTION_INPUT, .profileDevice = device, .portType = portType(info)});
            m_mirror.markChanged();
        }

        /// The value of "port.type" in a structure of a count and as many pairs of texts.
        static QString portType(const spa_pod* info)
        {
            spa_pod_parser parser{};
            spa_pod_frame frame{};
            std::int32_t count = 0;
            if (info == nullptr) {
                return {};
            }
            spa_pod_parser_pod(&parser, info);
            if (spa_pod_parser_push_struct(&parser, &frame) < 0
                || spa_pod_parser_get(&parser, SPA_POD_Int(&count), nullptr) < 0) {
                return {};
            }
            for (std::int32_t pair = 0; pair < count; ++pair) {
                const char* key = nullptr;
                const char* value = nullptr;
                if (spa_pod_parser_get(&parser, SPA_POD_String(&key), SPA_POD_String(&value), nullptr) < 0) {
                    break;
                }
                if (key != nullptr && std::strcmp(key, "port.type") == 0) {
                    return QString::fromUtf8(value);
                }
            }
            return {};
        }

        GraphMirror& m_mirror;
        GraphCard m_card;
        bool m_subscribed = false;
        Proxy m_proxy;
    };

    class ClientObject final : public GraphObject {
    public:
        ClientObject(GraphMirror& mirror, pw_registry* registry, std::uint32_t id, const spa_dict& properties)
            : GraphObject(id, properties)
            , m_mirror(mirror)
            , m_proxy(registry, id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT)
        {
            m_client.id = id;
            m_client.serial = m_serial;
            merge(m_client.properties, &properties);
            static const pw_client_events events = [] {
                pw_client_events table{};
                table.version = PW_VERSION_CLIENT_EVENTS;
                table.info = [](void* data, const pw_client_info* info) {
                    auto& client = *static_cast<ClientObject*>(data);
                    merge(client.m_client.properties, info->props);
                    client.m_mirror.markChanged();
                };
                return table;
            }();
            m_proxy.listen(events, this);
        }

        void contribute(GraphSnapshot& graph) const override { graph.clients.push_back(m_client); }

    private:
        GraphMirror& m_mirror;
        GraphClient m_client;
        Proxy m_proxy;
    };

    /// The session's settings: which device is the default, and at what rate the graph runs.
    class MetadataObject final : public GraphObject {
    public:
        MetadataObject(GraphMirror& mirror, pw_registry* registry, std::uint32_t id, const spa_dict& properties)
            : GraphObject(id, properties)
            , m_mirror(mirror)
            , m_proxy(registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA)
        {
            static const pw_metadata_events events = [] {
                pw_metadata_events table{};
                table.version = PW_VERSION_METADATA_EVENTS;
                table.property = [](void* data, std::uint32_t, const char* key, const char*, const char* value) {
                    static_cast<MetadataObject*>(data)->property(key, value);
                    return 0;
                };
                return table;
            }();
            m_proxy.listen(events, this);
        }

        void contribute(GraphSnapshot& graph) const override
        {
            if (!m_defaultSource.isEmpty()) {
                graph.defaultSource = m_defaultSource;
            }
            const double rate = m_forcedRate > 0 ? m_forcedRate : m_rate;
            if (rate > 0) {
                graph.graphRate = rate;
            }
        }

    private:
        void property(const char* key, const char* value)
        {
            const QByteArray name(key);
            const QByteArray content(value);
            if (name == "default.audio.source") {
                m_defaultSource = QJsonDocument::fromJson(content).object().value(u"name"_s).toString();
            } else if (name == "clock.rate") {
                m_rate = content.toDouble();
            } else if (name == "clock.force-rate") {
                m_forcedRate = content.toDouble();
            } else {
                return;
            }
            m_mirror.markChanged();
        }

        GraphMirror& m_mirror;
        QString m_defaultSource;
        double m_rate = 0;
        double m_forcedRate = 0;
        Proxy m_proxy;
    };

}  // namespace

void merge(GraphProperties& properties, const spa_dict* dictionary)
{
    if (dictionary == nullptr) {
        return;
    }
    for (std::uint32_t index = 0; index < dictionary->n_items; ++index) {
        const spa_dict_item& item = dictionary->items[index];
        properties.insert(QString::fromUtf8(item.key), QString::fromUtf8(item.value));
    }
}

GraphObject::GraphObject(std::uint32_t id, const spa_dict& properties)
    : m_id(id)
    , m_serial(text(properties, PW_KEY_OBJECT_SERIAL).toULongLong())
{ }

std::unique_ptr<GraphObject> GraphObject::make(
    GraphMirror& mirror, pw_registry* registry, std::uint32_t id, const char* type, const spa_dict& properties)
{
    const QLatin1StringView kind(type);
    if (kind == QLatin1StringView(PW_TYPE_INTERFACE_Node)) {
        return std::make_unique<NodeObject>(mirror, registry, id, properties);
    }
    if (kind == QLatin1StringView(PW_TYPE_INTERFACE_Port)) {
        return std::make_unique<PortObject>(id, properties);
    }
    if (kind == QLatin1StringView(PW_TYPE_INTERFACE_Link)) {
        return std::make_unique<LinkObject>(id, properties);
    }
    if (kind == QLatin1StringView(PW_TYPE_INTERFACE_Device)) {
        return std::make_unique<CardObject>(mirror, registry, id, properties);
    }
    if (kind == QLatin1StringView(PW_TYPE_INTERFACE_Client)) {
        return std::make_unique<ClientObject>(mirror, registry, id, properties);
    }
    const QString name = text(properties, PW_KEY_METADATA_NAME);
    if (kind == QLatin1StringView(PW_TYPE_INTERFACE_Metadata) && (name == "default"_L1 || name == "settings"_L1)) {
        return std::make_unique<MetadataObject>(mirror, registry, id, properties);
    }
    return nullptr;
}

}  // namespace vantiro
