// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/sources/AudioDevice.h"
#include "platform/pipewire/GraphSnapshot.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace vantiro::DeviceList {

/// A device and the node that it is.
struct Entry {
    AudioDevice device;
    std::uint64_t serial = 0;
};

/// The audio devices of a graph, in the order in which they appeared: sources have no outputs, sinks no inputs, duplex
/// nodes both. The UID is the node's name, with `#2`, `#3` for further nodes of one name. Any thread.
[[nodiscard]] std::vector<Entry> entries(const GraphSnapshot& graph);

/// A node's name as the text of a UID: `|`, `%`, control characters and the colon of a leading "app:" as %XX, so that
/// it never collides with an application's descriptor.
[[nodiscard]] QString uidFromName(const QString& name);
/// The name of the node that a UID stands for; empty for a further node of one name, which a name does not tell apart.
[[nodiscard]] QString nameFromUid(const QString& uid);

}  // namespace vantiro::DeviceList
