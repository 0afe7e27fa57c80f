// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace vantiro {

/// SIGTERM, SIGINT and SIGHUP as a signal of the event loop, for the whole life of the process: from the first one on
/// the program ends by itself, so that further ones change nothing. A SIGHUP that the process was started to ignore
/// stays ignored, and SIGPIPE is ignored from here on: a terminal that went away takes nothing along. One object a
/// process.
class EndSignals final : public QObject {
    Q_OBJECT

public:
    EndSignals();

Q_SIGNALS:
    /// The process was asked to end. May come more than once.
    void received();

private:
    QSocketNotifier m_notifier;
};

}  // namespace vantiro
