// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/recorder/RecorderState.h"
#include "core/sources/SourceRef.h"

#include <QProcess>
#include <QString>

#include <functional>

namespace vantiro {

/// The take of the demo. It is started by a program that can be killed, as the window would start it.
class DemoTake {
public:
    DemoTake() = default;
    /// Ends a take that still runs.
    ~DemoTake();

    DemoTake(const DemoTake&) = delete;
    DemoTake& operator=(const DemoTake&) = delete;

    /// Starts the take and waits until it runs; gives up when `interrupted` says so.
    [[nodiscard]] Result<RecorderState> start(
        const SourceRef& source, const QString& output, const std::function<bool()>& interrupted);
    [[nodiscard]] qint64 starterPid() const { return m_starter.processId(); }
    /// Kills the program that started the take.
    void killStarter();
    /// Ends the take as a user would, and returns its account.
    [[nodiscard]] static Result<RecorderState> stop();

    /// The other side: what the program that start() launches does until it is killed.
    static int beTheStarter(const SourceRef& source, const QString& output);

private:
    QProcess m_starter;
};

}  // namespace vantiro
