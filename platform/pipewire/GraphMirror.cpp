// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/GraphMirror.h"

#include "platform/pipewire/GraphObject.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    constexpr auto firstPictureLimit = 2s;
    constexpr auto shortestReconnect = 200ms;
    constexpr auto longestReconnect = 5000ms;

    /// Variables with which a user steers PipeWire's own tools. Here they would override what a take needs.
    constexpr const char* overridingVariables[] = {"PIPEWIRE_NODE", "PIPEWIRE_PROPS", "PIPEWIRE_LATENCY",
        "PIPEWIRE_RATE", "PIPEWIRE_QUANTUM", "PIPEWIRE_AUTOCONNECT", "PIPEWIRE_CONFIG_NAME", "PIPEWIRE_CONFIG_PREFIX"};

    void initialiseOnce()
    {
        static const bool done = [] {
            for (const char* variable : overridingVariables) {
                ::unsetenv(variable);
            }
            pw_init(nullptr, nullptr);
            // The library's own words would mix with the recorder's, of which the last line is shown to the user.
            if (::getenv("PIPEWIRE_DEBUG") == nullptr) {
                pw_log_set_level(SPA_LOG_LEVEL_NONE);
            }
            return true;
        }();
        static_cast<void>(done);
    }

    pw_thread_loop* newThreadLoop()
    {
        initialiseOnce();
        return pw_thread_loop_new("vantiro-graph", nullptr);
    }

    timespec toTimespec(std::chrono::milliseconds span)
    {
        return {.tv_sec = static_cast<time_t>(span.count() / 1000),
            .tv_nsec = static_cast<long>(span.count() % 1000 * 1'000'000)};
    }

}  // namespace

/// The C callbacks of the connection, each handed on to the mirror.
struct GraphMirrorEvents {
    static GraphMirror& mirror(void* data) { return *static_cast<GraphMirror*>(data); }

    static void done(void* data, std::uint32_t id, int sequence) { mirror(data).coreDone(id, sequence); }
    static void error(void* data, std::uint32_t id, int, int result, const char*)
    {
        if (id == PW_ID_CORE && result == -EPIPE) {
            mirror(data).coreFailed();
        }
    }
    static void global(
        void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t, const spa_dict* properties)
    {
        if (properties != nullptr) {
            mirror(data).addGlobal(id, type, *properties);
        }
    }
    static void globalRemoved(void* data, std::uint32_t id) { mirror(data).removeGlobal(id); }
    static void rebuild(void* data, std::uint64_t) { mirror(data).rebuild(); }
    static void lost(void* data, std::uint64_t)
    {
        mirror(data).disconnectFromDaemon();
        mirror(data).scheduleReconnect();
    }
    static void reconnect(void* data, std::uint64_t) { mirror(data).connectToDaemon(); }

    static const pw_core_events& coreEvents()
    {
        static const pw_core_events events = [] {
            pw_core_events table{};
            table.version = PW_VERSION_CORE_EVENTS;
            table.done = done;
            table.error = error;
            return table;
        }();
        return events;
    }
    static const pw_registry_events& registryEvents()
    {
        static const pw_registry_events events = [] {
            pw_registry_events table{};
            table.version = PW_VERSION_REGISTRY_EVENTS;
            table.global = global;
            table.global_remove = globalRemoved;
            return table;
        }();
        return events;
    }
};

GraphMirror::GraphMirror(bool asksForRealTime) : m_loop(newThreadLoop()), m_snapshot(std::make_shared<GraphSnapshot>())
{
    if (m_loop == nullptr) {
        m_settled = true;
        return;
    }
    pw_loop* loop = pw_thread_loop_get_loop(m_loop);
    // The plain client configuration of older releases gives the audio thread no real-time scheduling; that of newer
    // ones looks at the property.
    pw_properties* properties = asksForRealTime
        ? pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr)
        : pw_properties_new(PW_KEY_CONFIG_NAME, "client.conf", "module.rt", "false", nullptr);
    m_context = pw_context_new(loop, properties, 0);
    m_rebuildEvent = pw_loop_add_event(loop, GraphMirrorEvents::rebuild, this);
    m_lostEvent = pw_loop_add_event(loop, GraphMirrorEvents::lost, this);
    m_reconnectTimer = pw_loop_add_timer(loop, GraphMirrorEvents::reconnect, this);
    pw_thread_loop_start(m_loop);
    const LoopLock lock(m_loop);
    connectToDaemon();
}

GraphMirror::~GraphMirror()
{
    if (m_loop == nullptr) {
        return;
    }
    {
        const LoopLock lock(m_loop);
        disconnectFromDaemon();
    }
    pw_thread_loop_stop(m_loop);
    pw_loop* loop = pw_thread_loop_get_loop(m_loop);
    pw_loop_destroy_source(loop, m_reconnectTimer);
    pw_loop_destroy_source(loop, m_lostEvent);
    pw_loop_destroy_source(loop, m_rebuildEvent);
    if (m_context != nullptr) {
        pw_context_destroy(m_context);
    }
    pw_thread_loop_destroy(m_loop);
}

std::shared_ptr<const GraphSnapshot> GraphMirror::snapshot()
{
    std::unique_lock lock(m_snapshotMutex);
    // A daemon that accepts connections and does not answer is waited for once.
    m_firstSnapshot.wait_for(lock, firstPictureLimit, [this] { return m_settled; });
    m_settled = true;
    return m_snapshot;
}

pw_data_loop* GraphMirror::dataLoop() const
{
    return m_context == nullptr ? nullptr : pw_context_get_data_loop(m_context);
}

void GraphMirror::add(Observer& observer)
{
    m_observers.push_back(&observer);
}

void GraphMirror::remove(Observer& observer)
{
    std::erase(m_observers, &observer);
}

void GraphMirror::markChanged()
{
    pw_loop_signal_event(pw_thread_loop_get_loop(m_loop), m_rebuildEvent);
}

void GraphMirror::connectToDaemon()
{
    if (m_core != nullptr || m_context == nullptr) {
        return;
    }
    m_core = pw_context_connect(m_context, nullptr, 0);
    if (m_core == nullptr) {
        publish(std::make_shared<GraphSnapshot>());
        scheduleReconnect();
        return;
    }
    m_complete = false;
    m_syncRounds = 0;
    pw_core_add_listener(m_core, &m_coreHook, &GraphMirrorEvents::coreEvents(), this);
    m_registry = pw_core_get_registry(m_core, PW_VERSION_REGISTRY, 0);
    pw_registry_add_listener(m_registry, &m_registryHook, &GraphMirrorEvents::registryEvents(), this);
    m_pendingSync = pw_core_sync(m_core, PW_ID_CORE, 0);
}

void GraphMirror::disconnectFromDaemon()
{
    if (m_core == nullptr) {
        return;
    }
    // Observers may leave the list while they are told.
    for (Observer* observer : std::vector(m_observers)) {
        observer->connectionLost();
    }
    m_objects.clear();
    spa_hook_remove(&m_registryHook);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(m_registry));
    m_registry = nullptr;
    spa_hook_remove(&m_coreHook);
    pw_core_disconnect(m_core);
    m_core = nullptr;
    auto empty = std::make_shared<GraphSnapshot>();
    empty->rememberedRates = m_rememberedRates;
    publish(std::move(empty));
}

void GraphMirror::scheduleReconnect()
{
    m_reconnectDelay = std::clamp<std::chrono::milliseconds>(m_reconnectDelay * 2, shortestReconnect, longestReconnect);
    timespec delay = toTimespec(m_reconnectDelay);
    pw_loop_update_timer(pw_thread_loop_get_loop(m_loop), m_reconnectTimer, &delay, nullptr, false);
}

void GraphMirror::addGlobal(std::uint32_t id, const char* type, const spa_dict& properties)
{
    if (auto object = GraphObject::make(*this, m_registry, id, type, properties)) {
        m_objects[id] = std::move(object);
        markChanged();
    }
}

void GraphMirror::removeGlobal(std::uint32_t id)
{
    if (m_objects.erase(id) > 0) {
        markChanged();
    }
}

void GraphMirror::coreDone(std::uint32_t id, int sequence)
{
    if (id != PW_ID_CORE || sequence != m_pendingSync || m_complete) {
        return;
    }
    // The first round trip brings the objects, the second what they say of themselves.
    if (++m_syncRounds < 2) {
        m_pendingSync = pw_core_sync(m_core, PW_ID_CORE, 0);
        return;
    }
    m_complete = true;
    m_reconnectDelay = 0ms;
    rebuild();
}

void GraphMirror::coreFailed()
{
    // The connection cannot be torn down from inside its own callback.
    pw_loop_signal_event(pw_thread_loop_get_loop(m_loop), m_lostEvent);
}

void GraphMirror::rebuild()
{
    if (!m_complete || m_core == nullptr) {
        return;
    }
    std::vector<const GraphObject*> objects;
    objects.reserve(m_objects.size());
    for (const auto& [id, object] : m_objects) {
        objects.push_back(object.get());
    }
    std::ranges::sort(objects, {}, &GraphObject::serial);

    auto graph = std::make_shared<GraphSnapshot>();
    graph->connected = true;
    for (const GraphObject* object : objects) {
        object->contribute(*graph);
    }
    for (const GraphNode& node : graph->nodes) {
        if (node.running && node.format) {
            m_rememberedRates.insert(node.properties.value(QStringLiteral("node.name")), *node.format);
        }
    }
    graph->rememberedRates = m_rememberedRates;
    publish(std::move(graph));
}

void GraphMirror::publish(std::shared_ptr<const GraphSnapshot> snapshot)
{
    {
        const std::scoped_lock lock(m_snapshotMutex);
        m_snapshot = std::move(snapshot);
        m_settled = true;
    }
    m_firstSnapshot.notify_all();
    for (Observer* observer : std::vector(m_observers)) {
        observer->graphChanged(*m_snapshot);
    }
}

}  // namespace vantiro
