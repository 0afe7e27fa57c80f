// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QList>
#include <QString>

#include <pipewire/pipewire.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <utility>

namespace vantiro {

/// One client of a private daemon: a loop thread, a context without any of the user's configuration, and a core that
/// answered once. Main thread, unless stated otherwise.
class GraphConnection {
public:
    using Properties = QList<std::pair<QString, QString>>;

    /// Holds the loop's lock for as long as it lives; whatever touches a PipeWire object needs it.
    class Locker {
    public:
        explicit Locker(const GraphConnection& connection) : m_loop(connection.m_loop) { pw_thread_loop_lock(m_loop); }
        ~Locker() { pw_thread_loop_unlock(m_loop); }
        Locker(const Locker&) = delete;
        Locker& operator=(const Locker&) = delete;

    private:
        pw_thread_loop* m_loop;
    };

    /// Connects to the socket and waits for the daemon's first answer. A socket where nobody listens fails at once.
    [[nodiscard]] static Result<std::unique_ptr<GraphConnection>> open(
        const QString& socketPath, const Properties& clientProperties, std::chrono::milliseconds limit);
    ~GraphConnection();

    GraphConnection(const GraphConnection&) = delete;
    GraphConnection& operator=(const GraphConnection&) = delete;

    /// Waits until the daemon has worked off all that was sent before; false if it does not within the limit or is
    /// gone. Not with the lock held.
    [[nodiscard]] bool roundTrip(std::chrono::milliseconds limit);
    /// The daemon has not hung up. Any thread.
    [[nodiscard]] bool isAlive() const { return m_isAlive.load(std::memory_order_relaxed); }

    [[nodiscard]] pw_context* context() const { return m_context; }
    [[nodiscard]] pw_core* core() const { return m_core; }
    /// The loop of the context's data thread.
    [[nodiscard]] pw_loop* dataLoop() const { return pw_data_loop_get_loop(pw_context_get_data_loop(m_context)); }

private:
    GraphConnection();
    [[nodiscard]] Result<void> connect(const QString& socketPath, const Properties& clientProperties);
    [[nodiscard]] bool loadModules();
    void coreDone(std::uint32_t id, int sequence);
    void coreError(std::uint32_t id, int result);

    pw_thread_loop* m_loop = nullptr;
    pw_context* m_context = nullptr;
    pw_core* m_core = nullptr;
    pw_core_events m_events{};
    spa_hook m_listener{};
    int m_lastDone = 0;
    std::atomic<bool> m_isAlive = false;
};

/// Owns a pw_properties made of pairs until it is released to PipeWire.
[[nodiscard]] pw_properties* makeProperties(const GraphConnection::Properties& pairs);

}  // namespace vantiro
