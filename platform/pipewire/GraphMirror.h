// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/pipewire/GraphSnapshot.h"

#include <pipewire/pipewire.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace vantiro {

class GraphObject;

/// Holds the lock of a PipeWire thread while it lives.
class LoopLock {
public:
    explicit LoopLock(pw_thread_loop* loop) : m_loop(loop) { pw_thread_loop_lock(m_loop); }
    ~LoopLock() { pw_thread_loop_unlock(m_loop); }

    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

private:
    pw_thread_loop* m_loop;
};

/// This process's one connection to PipeWire, and its picture of the graph: a thread of PipeWire's own that follows the
/// registry. When the daemon goes away the picture is empty, and the connection is made anew by itself.
class GraphMirror {
public:
    /// Told on PipeWire's thread, with its lock held.
    class Observer {
    public:
        virtual ~Observer() = default;

        Observer(const Observer&) = delete;
        Observer& operator=(const Observer&) = delete;

        /// The picture changed.
        virtual void graphChanged(const GraphSnapshot& graph) = 0;
        /// The connection is about to be torn down: whatever was made on it must be destroyed now.
        virtual void connectionLost() = 0;

    protected:
        Observer() = default;
    };

    /// PipeWire asks services on the message buses for real-time scheduling where the system does not grant it by
    /// itself, and waits for those buses without end. `asksForRealTime` is false where that must not happen.
    explicit GraphMirror(bool asksForRealTime = true);
    ~GraphMirror();

    GraphMirror(const GraphMirror&) = delete;
    GraphMirror& operator=(const GraphMirror&) = delete;

    /// The latest picture. Waits for the first one, at most 2 seconds. Any thread but PipeWire's.
    [[nodiscard]] std::shared_ptr<const GraphSnapshot> snapshot();

    /// The picture as it is now; PipeWire's thread or its lock.
    [[nodiscard]] const GraphSnapshot& current() const { return *m_snapshot; }
    [[nodiscard]] pw_thread_loop* loop() const { return m_loop; }
    /// Absent while there is no connection; PipeWire's thread or its lock.
    [[nodiscard]] pw_core* core() const { return m_core; }
    /// The loop on which the audio callbacks run; absent if the thread could not be made.
    [[nodiscard]] pw_data_loop* dataLoop() const;

    /// With PipeWire's lock held.
    void add(Observer& observer);
    void remove(Observer& observer);

    /// A bound object changed, so the picture is out of date. PipeWire's thread.
    void markChanged();

private:
    friend struct GraphMirrorEvents;

    void connectToDaemon();
    void disconnectFromDaemon();
    void scheduleReconnect();
    void addGlobal(std::uint32_t id, const char* type, const spa_dict& properties);
    void removeGlobal(std::uint32_t id);
    void coreDone(std::uint32_t id, int sequence);
    void coreFailed();
    void rebuild();
    void publish(std::shared_ptr<const GraphSnapshot> snapshot);

    pw_thread_loop* m_loop = nullptr;
    pw_context* m_context = nullptr;
    pw_core* m_core = nullptr;
    pw_registry* m_registry = nullptr;
    spa_hook m_coreHook{};
    spa_hook m_registryHook{};
    spa_source* m_rebuildEvent = nullptr;
    spa_source* m_lostEvent = nullptr;
    spa_source* m_reconnectTimer = nullptr;
    int m_pendingSync = -1;
    int m_syncRounds = 0;
    bool m_complete = false;  ///< Both round trips of the first look are done.
    std::chrono::milliseconds m_reconnectDelay{0};

    std::map<std::uint32_t, std::unique_ptr<GraphObject>> m_objects;
    std::vector<Observer*> m_observers;
    QHash<QString, double> m_rememberedRates;

    std::mutex m_snapshotMutex;
    std::condition_variable m_firstSnapshot;
    std::shared_ptr<const GraphSnapshot> m_snapshot;  ///< Written on PipeWire's thread, under the mutex.
    bool m_settled = false;
};

}  // namespace vantiro
