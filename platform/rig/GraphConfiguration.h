// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/rig/PrivateGraph.h"

#include <QByteArray>
#include <QString>

/// What a private daemon reads at its start.
namespace vantiro::GraphConfiguration {

/// A name of its own, so that no drop-in of the system or the user applies to it.
inline const QString fileName = QStringLiteral("vantiro-rig.conf");
/// The socket's name in the daemon's folder, as PIPEWIRE_REMOTE takes it.
inline const QString socketName = QStringLiteral("pipewire-0");

/// The configuration file. Where real-time scheduling is not granted, asking for it would lead to the user's buses. Any
/// thread.
[[nodiscard]] QByteArray text(const PrivateGraphOptions& options, bool hasRealTime);

}  // namespace vantiro::GraphConfiguration
