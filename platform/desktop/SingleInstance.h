// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/BusLink.h"
#include "platform/desktop/RunningApplication.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace vantiro {

/// What became of a start of the application: of those in one session, the first is the one that stays, and it owns the
/// application's name on the session bus.
struct StartClaim {
    enum class Outcome {
        stays,       ///< The first one, or there is no session bus.
        handedOver,  ///< Another one runs and has everything.
        unanswered,  ///< Another one has the name and does not answer.
    };

    Outcome outcome = Outcome::stays;
    Bus bus;  ///< Owns the name; null without a session bus.

    /// Takes the name, or hands the links to the one that has it, whose window comes to the front if there are none or
    /// if they show something. Waits for some seconds at the most. Before a QGuiApplication is made.
    [[nodiscard]] static StartClaim make(const QStringList& links);
};

/// The application as the others of the session ask it, as `org.freedesktop.Application` on the session bus. Main
/// thread only.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    /// The bus that owns the name, or null: then nobody asks.
    explicit SingleInstance(Bus bus);
    ~SingleInstance() override;

Q_SIGNALS:
    /// The window is wanted.
    void activated(const vantiro::StartTokens& tokens);
    /// These links are wanted, whatever they are, and the window if they show something in it.
    void opened(const QStringList& links, const vantiro::StartTokens& tokens);
    /// A take is to be started, or stopped.
    void toggleWanted();

private:
    std::unique_ptr<BusLink> m_link;
};

}  // namespace vantiro
