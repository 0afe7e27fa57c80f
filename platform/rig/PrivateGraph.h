// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/foundation/Result.h"

#include <QList>
#include <QString>

#include <memory>
#include <utility>

#include <sys/types.h>

namespace vantiro {

/// A virtual pair of speakers: a sink without hardware, paced by the daemon itself.
struct VirtualSink {
    QString name = {};         ///< `node.name`: letters, digits, `-`, `_` and `.`.
    QString description = {};  ///< `node.description`.
    int channels = 2;          ///< 1 to 32.
};

/// What a private graph starts with.
struct PrivateGraphOptions {
    int defaultRate = 48000;                          ///< Hz.
    QList<int> allowedRates = {44100, 48000, 96000};  ///< Hz; rates that the graph may switch to.
    int quantum = 256;                                ///< Frames a cycle that nobody asked to change.
    int minQuantum = 32;                              ///< Frames.
    int maxQuantum = 2048;                            ///< Frames.
    QList<VirtualSink> sinks = {};                    ///< Made with the daemon.
};

/// A PipeWire daemon of our own in a folder of its own: no session manager, no D-Bus, no sound card, and no way to the
/// user's audio. The daemon dies with the thread that started it, so the thread must outlive this object; its log
/// (warnings and errors) is the file "pipewire.log" in the folder.
class PrivateGraph {
public:
    using Options = PrivateGraphOptions;
    /// Name and value of an environment variable.
    using Variable = std::pair<QString, QString>;

    /// Starts the daemon and returns once its socket answers, at most 10 seconds later. `folder` is made if it is
    /// missing (mode 0700), and must be short enough for a socket's path (about 90 bytes). It is left behind.
    [[nodiscard]] static Result<std::unique_ptr<PrivateGraph>> start(
        const QString& folder, const Options& options = {});

    /// Kills the daemon, reaps it.
    ~PrivateGraph();

    PrivateGraph(const PrivateGraph&) = delete;
    PrivateGraph& operator=(const PrivateGraph&) = delete;

    /// What a client's environment needs to find this graph and no other: PIPEWIRE_RUNTIME_DIR, XDG_RUNTIME_DIR and
    /// PIPEWIRE_REMOTE. Any thread.
    [[nodiscard]] QList<Variable> environment() const;
    /// Puts environment() into this process's own environment. Before other threads read it.
    void applyEnvironment() const;
    /// Lets streams of programs that start from here on have ports, as a session manager does elsewhere. That stands in
    /// the folder of XDG_CONFIG_HOME, which has to be one of the test's own. Before other threads change the
    /// environment.
    [[nodiscard]] static Result<void> givePortsToStreams();
    /// The absolute path of the daemon's socket. Any thread.
    [[nodiscard]] QString socketPath() const;
    /// The daemon's process id, or 0 while none runs.
    [[nodiscard]] pid_t processId() const;
    /// The daemon is there (though perhaps paused).
    [[nodiscard]] bool isRunning() const;

    /// Ends the daemon in order (SIGTERM; SIGKILL after 2 seconds) and reaps it. Nothing happens if none runs.
    void stop();
    /// Ends the daemon at once (SIGKILL) and reaps it: a crash, as its clients see it.
    void kill();
    /// Freezes the daemon: it stays connected and answers nothing.
    void pause();
    /// Ends a pause.
    void resume();
    /// Starts the daemon again at the same place, after stop(), kill() or by stopping it first. Virtual gear of the
    /// former daemon does not come along.
    [[nodiscard]] Result<void> restart();

private:
    struct Daemon;
    explicit PrivateGraph(std::unique_ptr<Daemon> daemon);

    std::unique_ptr<Daemon> m_daemon;
};

}  // namespace vantiro
