// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/VirtualDevice.h"

#include "platform/rig/GraphConnection.h"
#include "platform/rig/SourceNode.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>

namespace vantiro {

namespace {

    using Milliseconds = std::chrono::milliseconds;

    constexpr Milliseconds answerLimit{5000};
    constexpr Milliseconds leaveLimit{1000};

    bool isSane(const VirtualDeviceOptions& options)
    {
        return !options.name.isEmpty() && options.channels >= 1 && options.channels <= 32 && options.sampleRate >= 8000
            && options.sampleRate <= 192000 && options.quantum >= 16 && options.quantum <= maxCycleFrames;
    }

    GraphConnection::Properties nodeProperties(const VirtualDeviceOptions& options)
    {
        const bool hasOwnClock = options.clock == VirtualDeviceOptions::Clock::own;
        GraphConnection::Properties result = {
            {QStringLiteral(PW_KEY_NODE_NAME), options.name},
            {QStringLiteral(PW_KEY_NODE_DESCRIPTION),
                options.description.isEmpty() ? options.name : options.description},
            {QStringLiteral(PW_KEY_MEDIA_CLASS), QStringLiteral("Audio/Source")},
            {QStringLiteral(PW_KEY_AUDIO_CHANNELS), QString::number(options.channels)},
        };
        if (hasOwnClock) {
            // The daemon's wish and the device's own figures must agree, since both write the clock's area.
            result += {
                {QStringLiteral(PW_KEY_NODE_DRIVER), QStringLiteral("true")},
                {QStringLiteral(PW_KEY_PRIORITY_DRIVER), QStringLiteral("30000")},
                {QStringLiteral("node.rate"), QStringLiteral("1/%1").arg(options.sampleRate)},
                {QStringLiteral("node.latency"), QStringLiteral("%1/%2").arg(options.quantum).arg(options.sampleRate)},
            };
        }
        result += options.properties;
        return result;
    }

}  // namespace

struct VirtualDevice::Private {
    std::unique_ptr<GraphConnection> connection;
    std::unique_ptr<SourceNode> node;
    int channels = 0;
    pw_proxy* proxy = nullptr;
    pw_proxy_events proxyEvents{};
    spa_hook proxyListener{};
    pw_registry* registry = nullptr;
    pw_registry_events registryEvents{};
    spa_hook registryListener{};
    std::uint32_t nodeId = SPA_ID_INVALID;
    std::atomic<bool> isConnected = false;
    // The ports in the graph, as (id of the port, id of its node): ports are told before our own node's id is.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> ports;

    Private() = default;
    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;

    ~Private()
    {
        if (connection) {
            const GraphConnection::Locker locker(*connection);
            leave();
            if (registry != nullptr) {
                spa_hook_remove(&registryListener);
                pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry));
            }
            node.reset();
        }
    }

    void leave()
    {
        if (proxy == nullptr) {
            return;
        }
        node->stopCycles();
        spa_hook_remove(&proxyListener);
        pw_proxy_destroy(std::exchange(proxy, nullptr));
        isConnected = false;
    }

    [[nodiscard]] bool enter(const Options& options)
    {
        const GraphConnection::Locker locker(*connection);
        node = std::make_unique<SourceNode>(connection->dataLoop(), options);
        channels = options.channels;
        if (!watchPorts()) {
            return false;
        }
        pw_properties* properties = makeProperties(nodeProperties(options));
        proxy = pw_core_export(connection->core(), SPA_TYPE_INTERFACE_Node, &properties->dict, node->interface(), 0);
        pw_properties_free(properties);
        if (proxy == nullptr) {
            return false;
        }
        proxyEvents.version = PW_VERSION_PROXY_EVENTS;
        proxyEvents.bound = [](void* self, std::uint32_t id) { static_cast<Private*>(self)->nodeId = id; };
        proxyEvents.removed = [](void* self) { static_cast<Private*>(self)->isConnected = false; };
        pw_proxy_add_listener(proxy, &proxyListener, &proxyEvents, this);
        isConnected = true;
        return true;
    }

    [[nodiscard]] bool watchPorts()
    {
        registry = pw_core_get_registry(connection->core(), PW_VERSION_REGISTRY, 0);
        if (registry == nullptr) {
            return false;
        }
        registryEvents.version = PW_VERSION_REGISTRY_EVENTS;
        registryEvents.global = [](void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                                    const spa_dict* properties) {
            const char* owner = properties != nullptr ? spa_dict_lookup(properties, PW_KEY_NODE_ID) : nullptr;
            if (owner != nullptr && spa_streq(type, PW_TYPE_INTERFACE_Port)) {
                static_cast<Private*>(self)->ports.emplace_back(
                    id, static_cast<std::uint32_t>(std::strtoul(owner, nullptr, 10)));
            }
        };
        registryEvents.global_remove = [](void* self, std::uint32_t id) {
            std::erase_if(static_cast<Private*>(self)->ports, [id](const auto& port) { return port.first == id; });
        };
        pw_registry_add_listener(registry, &registryListener, &registryEvents, this);
        return true;
    }

    [[nodiscard]] bool isComplete() const
    {
        const GraphConnection::Locker locker(*connection);
        return nodeId != SPA_ID_INVALID
            && std::ranges::count(ports, nodeId, &std::pair<std::uint32_t, std::uint32_t>::second) == channels;
    }

    template <class Order>
    void order(Order&& give)
    {
        const GraphConnection::Locker locker(*connection);
        give(*node);
    }
};

VirtualDevice::VirtualDevice(std::unique_ptr<Private> device) : m_private(std::move(device)) { }

VirtualDevice::~VirtualDevice() = default;

Result<std::unique_ptr<VirtualDevice>> VirtualDevice::make(const QString& socketPath, const Options& options)
{
    if (!isSane(options)) {
        return std::unexpected(errnoError(options.name, EINVAL));
    }
    auto device = std::make_unique<Private>();
    auto connection = GraphConnection::open(socketPath, options.clientProperties, answerLimit);
    if (!connection) {
        return std::unexpected(connection.error());
    }
    device->connection = std::move(*connection);
    if (!device->enter(options)) {
        return std::unexpected(errnoError(options.name, errno));
    }
    const auto deadline = std::chrono::steady_clock::now() + answerLimit;
    while (!device->isComplete()) {
        // Each round trip is one step of the negotiation: the node is bound, its ports are told, they are listed.
        if (std::chrono::steady_clock::now() >= deadline || !device->connection->roundTrip(answerLimit)) {
            return std::unexpected(errnoError(options.name, ETIMEDOUT));
        }
    }
    return std::unique_ptr<VirtualDevice>(new VirtualDevice(std::move(device)));
}

std::uint32_t VirtualDevice::nodeId() const
{
    return m_private->nodeId;
}

std::int64_t VirtualDevice::contentPosition() const
{
    return m_private->node->contentPosition();
}

std::int64_t VirtualDevice::cycles() const
{
    return m_private->node->cycles();
}

bool VirtualDevice::isConnected() const
{
    return m_private->isConnected && m_private->connection->isAlive();
}

void VirtualDevice::jumpPosition(std::int64_t frames)
{
    m_private->order([frames](SourceNode& node) { node.jumpPosition(frames); });
}

void VirtualDevice::overrun(std::int64_t frames)
{
    m_private->order([frames](SourceNode& node) { node.overrun(std::max<std::int64_t>(frames, 0)); });
}

void VirtualDevice::setRate(int sampleRate)
{
    m_private->order([sampleRate](SourceNode& node) { node.setRate(std::clamp(sampleRate, 8000, 192000)); });
}

void VirtualDevice::setQuantum(int frames)
{
    m_private->order([frames](SourceNode& node) { node.setQuantum(std::clamp(frames, 16, maxCycleFrames)); });
}

void VirtualDevice::setClockId(std::uint32_t id)
{
    m_private->order([id](SourceNode& node) { node.setClockId(id); });
}

void VirtualDevice::hang()
{
    m_private->order([](SourceNode& node) { node.hang(); });
}

void VirtualDevice::resumeCycles(Resume how)
{
    m_private->order([how](SourceNode& node) { node.resumeCycles(how); });
}

void VirtualDevice::disconnect()
{
    {
        const GraphConnection::Locker locker(*m_private->connection);
        m_private->leave();
    }
    // Whoever pulls the cable relies on the node being gone from here on; a daemon that hangs is told later.
    static_cast<void>(m_private->connection->roundTrip(leaveLimit));
}

}  // namespace vantiro
