// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/recorder/RecorderState.h"
#include "core/sources/SourceRef.h"

#include <QProcess>
#include <QString>

#include <functional>
#include <optional>

namespace vantiro {

/// One take of the demo, with a support folder of its own, so that two recorders can run side by side. It is started by
/// a program that can be killed, as the window would start it.
class DemoTake {
public:
    /// `dataHome` stands for the user's data folder.
    DemoTake(SourceRef source, QString dataHome, QString output);
    /// Ends a take that still runs.
    ~DemoTake();

    DemoTake(const DemoTake&) = delete;
    DemoTake& operator=(const DemoTake&) = delete;

    /// Starts the take and waits until it runs; gives up when `interrupted` says so.
    [[nodiscard]] Result<RecorderState> start(const std::function<bool()>& interrupted);
    /// What the recorder says of the take now; nothing if it has gone.
    [[nodiscard]] std::optional<RecorderState> state() const;
    [[nodiscard]] qint64 starterPid() const { return m_starter.processId(); }
    /// Kills the program that started the take.
    void killStarter();
    /// Ends the take with the command that a user has for it, and returns its account.
    [[nodiscard]] Result<RecorderState> stop();

    /// The other side: what the program that start() launches does until it is killed.
    static int beTheStarter(const SourceRef& source, const QString& output);

private:
    [[nodiscard]] QProcessEnvironment environment() const;

    SourceRef m_source;
    QString m_dataHome;
    QString m_output;
    QProcess m_starter;
    bool m_started = false;
};

}  // namespace vantiro
