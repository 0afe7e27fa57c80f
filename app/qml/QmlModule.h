// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QQmlEngine;

namespace vantiro {

/// Makes the QML module `Vantiro`, which is linked into the program, known to an engine, and its typeface the
/// application's font. Needs a QGuiApplication.
void installQmlModule(QQmlEngine& engine);

}  // namespace vantiro
