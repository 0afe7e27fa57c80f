// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/pipewire/GraphSnapshot.h"

#include <pipewire/pipewire.h>

#include <memory>

namespace vantiro {

class GraphMirror;

/// One object of the registry as the mirror holds it. PipeWire's thread only.
class GraphObject {
public:
    virtual ~GraphObject() = default;

    GraphObject(const GraphObject&) = delete;
    GraphObject& operator=(const GraphObject&) = delete;

    /// The object for a global of this type, bound where its own words are needed; nothing for types that the picture
    /// leaves out.
    [[nodiscard]] static std::unique_ptr<GraphObject> make(
        GraphMirror& mirror, pw_registry* registry, std::uint32_t id, const char* type, const spa_dict& properties);

    /// Adds this object to a picture.
    virtual void contribute(GraphSnapshot& graph) const = 0;

    [[nodiscard]] std::uint64_t serial() const { return m_serial; }

protected:
    GraphObject(std::uint32_t id, const spa_dict& properties);

    std::uint32_t m_id;
    std::uint64_t m_serial;
};

/// Adds what a dictionary holds to properties that are already known.
void merge(GraphProperties& properties, const spa_dict* dictionary);

}  // namespace vantiro
