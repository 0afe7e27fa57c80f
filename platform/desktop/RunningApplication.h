// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/desktop/Bus.h"

#include <QString>
#include <QStringList>

#include <chrono>

namespace vantiro {

/// What a desktop gives along with a start, so that the window may come to the front. Any of them may be empty.
struct StartTokens {
    QString activation = {};  ///< As Wayland knows it.
    QString startup = {};     ///< As X11 knows it.

    /// Those that this process was started with. To be asked before a QGuiApplication takes them.
    [[nodiscard]] static StartTokens fromEnvironment();
};

/// The application of this session, as others ask it over the bus. None of this starts it, and all of it waits.
namespace RunningApplication {

    /// Where the application is on the bus, beside its name.
    inline constexpr const char* path = "/org/vantiro/Vantiro";
    inline constexpr const char* interface = "org.freedesktop.Application";
    /// The one action: starts or stops a take.
    inline constexpr const char* toggleAction = "toggle";

    enum class Answer {
        done,    ///< It does what it was asked.
        absent,  ///< It does not run, or ended meanwhile.
        silent,  ///< It is there and does not answer, or refuses.
    };

    /// A connection to the session bus that answers; nothing where there is none.
    [[nodiscard]] Bus session();

    /// Brings its window to the front; with links, as far as these show something in it.
    [[nodiscard]] Answer open(
        const Bus& bus, const QStringList& links, const StartTokens& tokens, std::chrono::milliseconds patience);
    [[nodiscard]] Answer act(const Bus& bus, const char* action, std::chrono::milliseconds patience);

}  // namespace RunningApplication

}  // namespace vantiro
