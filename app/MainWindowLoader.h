// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/Desk.h"
#include "app/qml/Theme.h"

#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

/// Makes the main window of what the screens' module holds.
namespace vantiro::MainWindowLoader {

/// Who draws what is around the window.
enum class Frame {
    own,     ///< The window's strip moves it and has its keys.
    system,  ///< The desktop does both.
};

/// What the environment asks for: VANTIRO_FRAME=1 gives the system's frame.
[[nodiscard]] Frame wantedFrame();

/// The window, not shown yet; the engine owns it. Null if it cannot be made, with the reason in the log. The desk
/// outlives the engine.
[[nodiscard]] QQuickWindow* load(QQmlApplicationEngine& engine, Desk& desk, Frame frame);

/// The theme of a loaded window; the engine owns it.
[[nodiscard]] Theme& theme(QQmlApplicationEngine& engine);

/// The application's icon in all sizes.
[[nodiscard]] QIcon icon();

}  // namespace vantiro::MainWindowLoader
