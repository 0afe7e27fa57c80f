// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace vantiro {

/// Properties of an object of the graph, as its owner wrote them: a stranger's text.
using GraphProperties = QHash<QString, QString>;

struct GraphNode {
    std::uint32_t id = 0;
    std::uint64_t serial = 0;  ///< Never used again, unlike the id.
    GraphProperties properties;
    std::uint32_t inputPorts = 0;  ///< As many as the node promises; they appear one by one.
    std::uint32_t outputPorts = 0;
    bool running = false;
    std::optional<double> format;       ///< Rate in Hz that the hardware is set to.
    std::optional<double> fixedFormat;  ///< The only rate in Hz that it can be set to.
};

struct GraphPort {
    std::uint32_t id = 0;
    std::uint32_t node = 0;
    std::uint32_t index = 0;  ///< Among the node's ports of this direction.
    bool isInput = false;
    bool isMonitor = false;
    bool isAudio = false;
};

struct GraphLink {
    std::uint32_t id = 0;
    std::uint32_t outputNode = 0;
    std::uint32_t outputPort = 0;
    std::uint32_t inputNode = 0;
    std::uint32_t inputPort = 0;
};

/// A program's connection to the graph.
struct GraphClient {
    std::uint32_t id = 0;
    std::uint64_t serial = 0;
    GraphProperties properties;
};

/// One way of a card's sound, such as its microphone socket.
struct GraphRoute {
    bool isInput = false;
    std::int32_t profileDevice = -1;  ///< Which of the card's nodes it belongs to (`card.profile.device`).
    QString portType;
};

struct GraphCard {
    std::uint32_t id = 0;
    GraphProperties properties;
    std::vector<GraphRoute> routes;
};

/// The graph at one moment. Objects stand in the order in which they appeared.
struct GraphSnapshot {
    bool connected = false;
    std::vector<GraphNode> nodes;
    std::vector<GraphPort> ports;
    std::vector<GraphLink> links;
    std::vector<GraphCard> cards;
    std::vector<GraphClient> clients;
    QString defaultSource;     ///< `node.name` of the default input; empty if there is none.
    double graphRate = 48000;  ///< Hz at which the graph runs when nobody asks for another rate.
    /// The last rate in Hz at which a node of that name ran while this process watched.
    QHash<QString, double> rememberedRates;

    [[nodiscard]] const GraphNode* nodeWithSerial(std::uint64_t serial) const;
    [[nodiscard]] const GraphNode* nodeWithId(std::uint32_t id) const;
    [[nodiscard]] const GraphCard* cardWithId(std::uint32_t id) const;
    [[nodiscard]] const GraphClient* clientWithId(std::uint32_t id) const;
    /// Audio ports of a node in one direction, without monitors, in the order of their index.
    [[nodiscard]] std::vector<GraphPort> audioPorts(std::uint32_t node, bool isInput) const;
};

}  // namespace vantiro
