// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/GraphConnection.h"

#include "core/foundation/RealTime.h"

#include <QFile>

#include <pipewire/impl.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <mutex>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace vantiro {

namespace {

    Result<int> connectedSocket(const QString& path)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray bytes = QFile::encodeName(path);
        if (static_cast<std::size_t>(bytes.size()) >= sizeof(address.sun_path)) {
            return std::unexpected(errnoError(path, ENAMETOOLONG));
        }
        std::memcpy(address.sun_path, bytes.constData(), static_cast<std::size_t>(bytes.size()));
        const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        if (descriptor < 0) {
            return std::unexpected(errnoError(path, errno));
        }
        if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
            const int number = errno;
            ::close(descriptor);
            return std::unexpected(errnoError(path, number));
        }
        return descriptor;
    }

    // The gear must behave the same on every machine, so no configuration file has a say. PipeWire warns that modules
    // and real-time scheduling are missing then, as they should be; a warning means something only to a user who set
    // the level himself.
    pw_context* quietContext(pw_loop* loop)
    {
        const spa_log_level level = pw_log_level;
        if (!qEnvironmentVariableIsSet("PIPEWIRE_DEBUG")) {
            pw_log_set_level(SPA_LOG_LEVEL_ERROR);
        }
        pw_context* context =
            pw_context_new(loop, makeProperties({{QStringLiteral(PW_KEY_CONFIG_NAME), QStringLiteral("null")}}), 0);
        pw_log_set_level(level);
        return context;
    }

    void initialiseOnce()
    {
        static std::once_flag once;
        std::call_once(once, [] { pw_init(nullptr, nullptr); });
    }

}  // namespace

pw_properties* makeProperties(const GraphConnection::Properties& pairs)
{
    pw_properties* properties = pw_properties_new(nullptr, nullptr);
    for (const auto& [name, value] : pairs) {
        pw_properties_set(properties, name.toUtf8().constData(), value.toUtf8().constData());
    }
    return properties;
}

GraphConnection::GraphConnection() = default;

Result<std::unique_ptr<GraphConnection>> GraphConnection::open(
    const QString& socketPath, const Properties& clientProperties, std::chrono::milliseconds limit)
{
    initialiseOnce();
    std::unique_ptr<GraphConnection> connection(new GraphConnection);
    if (auto connected = connection->connect(socketPath, clientProperties); !connected) {
        return std::unexpected(connected.error());
    }
    if (!connection->roundTrip(limit)) {
        return std::unexpected(errnoError(socketPath, connection->isAlive() ? ETIMEDOUT : EPIPE));
    }
    return connection;
}

Result<void> GraphConnection::connect(const QString& socketPath, const Properties& clientProperties)
{
    m_loop = pw_thread_loop_new("vantiro-rig", nullptr);
    if (m_loop == nullptr) {
        return std::unexpected(errnoError(socketPath, errno));
    }
    m_context = quietContext(pw_thread_loop_get_loop(m_loop));
    if (m_context == nullptr || !loadModules()) {
        return std::unexpected(errnoError(socketPath, errno));
    }
    const Result<int> socket = connectedSocket(socketPath);
    if (!socket) {
        return std::unexpected(socket.error());
    }
    if (spa_thread* thread = pw_data_loop_get_thread(pw_context_get_data_loop(m_context)); thread != nullptr) {
        realTime::give(reinterpret_cast<pthread_t>(thread));
    }
    // The call owns the socket, even if it fails.
    m_core = pw_context_connect_fd(m_context, *socket, makeProperties(clientProperties), 0);
    if (m_core == nullptr) {
        return std::unexpected(errnoError(socketPath, errno));
    }
    m_isAlive = true;
    m_events.version = PW_VERSION_CORE_EVENTS;
    m_events.done = [](void* self, std::uint32_t id, int sequence) {
        static_cast<GraphConnection*>(self)->coreDone(id, sequence);
    };
    m_events.error = [](void* self, std::uint32_t id, int, int result, const char*) {
        static_cast<GraphConnection*>(self)->coreError(id, result);
    };
    pw_core_add_listener(m_core, &m_listener, &m_events, this);
    if (const int started = pw_thread_loop_start(m_loop); started < 0) {
        return std::unexpected(errnoError(socketPath, -started));
    }
    return {};
}

bool GraphConnection::loadModules()
{
    return pw_context_load_module(m_context, "libpipewire-module-protocol-native", nullptr, nullptr) != nullptr
        && pw_context_load_module(m_context, "libpipewire-module-client-node", nullptr, nullptr) != nullptr;
}

GraphConnection::~GraphConnection()
{
    if (m_loop == nullptr) {
        return;
    }
    pw_thread_loop_stop(m_loop);
    if (m_core != nullptr) {
        spa_hook_remove(&m_listener);
        pw_core_disconnect(m_core);
    }
    if (m_context != nullptr) {
        pw_context_destroy(m_context);
    }
    pw_thread_loop_destroy(m_loop);
}

bool GraphConnection::roundTrip(std::chrono::milliseconds limit)
{
    const Locker locker(*this);
    timespec deadline{};
    pw_thread_loop_get_time(m_loop, &deadline, std::chrono::nanoseconds(limit).count());
    const int sequence = pw_core_sync(m_core, PW_ID_CORE, 0);
    while (m_lastDone != sequence) {
        if (!isAlive() || pw_thread_loop_timed_wait_full(m_loop, &deadline) != 0) {
            return false;
        }
    }
    return true;
}

void GraphConnection::coreDone(std::uint32_t id, int sequence)
{
    if (id == PW_ID_CORE) {
        m_lastDone = sequence;
        pw_thread_loop_signal(m_loop, false);
    }
}

void GraphConnection::coreError(std::uint32_t id, int result)
{
    if (id == PW_ID_CORE && result == -EPIPE) {
        m_isAlive = false;
        pw_thread_loop_signal(m_loop, false);
    }
}

}  // namespace vantiro
