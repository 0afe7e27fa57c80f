// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/DeviceList.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    constexpr std::uint32_t cardId = 30;

    void addNode(GraphSnapshot& graph, const QString& name, const GraphProperties& properties = {},
        const QString& mediaClass = u"Audio/Source"_s)
    {
        GraphNode& node = graph.nodes.emplace_back();
        node.id = static_cast<std::uint32_t>(100 + graph.nodes.size());
        node.serial = node.id + 1000;
        node.properties = {{u"node.name"_s, name}, {u"media.class"_s, mediaClass}};
        node.properties.insert(properties);
    }

    void addPorts(GraphSnapshot& graph, int count, GraphPort port)
    {
        port.node = graph.nodes.back().id;
        for (; count > 0; --count) {
            port.id = static_cast<std::uint32_t>(500 + graph.ports.size());
            graph.ports.push_back(port);
        }
    }

    /// The device of a graph that has one.
    AudioDevice only(const GraphSnapshot& graph)
    {
        const auto entries = DeviceList::entries(graph);
        EXPECT_EQ(entries.size(), 1U);
        return entries.empty() ? AudioDevice() : entries.front().device;
    }

}  // namespace

TEST(DeviceListTest, GivesEveryAudioDeviceAUIDOfItsOwn)
{
    GraphSnapshot graph;
    const QStringList names{u"mixer"_s, u"app:x:y"_s, u"mixer"_s, u"a|b%c\x7f\n"_s, u"mixer"_s, u"App:x"_s, u""_s};
    for (const QString& name : names) {
        addNode(graph, name);
    }
    addNode(graph, u"stream"_s, {}, u"Stream/Input/Audio"_s);
    addNode(graph, u"camera"_s, {}, u"Video/Source"_s);
    QStringList uids;
    for (const DeviceList::Entry& entry : DeviceList::entries(graph)) {
        uids << entry.device.uid;
        EXPECT_EQ(entry.serial, 1100U + static_cast<unsigned>(uids.size()));
    }
    EXPECT_EQ(uids.join(u' '), u"mixer app%3Ax:y mixer#2 a%7Cb%25c%7F%0A mixer#3 App:x"_s);
}

TEST(DeviceListTest, ShowsCleanNames)
{
    const QString face = QString::fromUcs4(U"\U0001F3A7");
    for (const auto& [description, name] : {std::pair{u" \tDJM\u0007-900\n\u202e "_s + face, u"DJM-900 "_s + face},
             {u" \n"_s, u"node"_s}, {QString(199, u'x') + face + face, QString(199, u'x') + face}}) {
        GraphSnapshot graph;
        addNode(graph, u"node"_s, {{u"node.description"_s, description}});
        EXPECT_EQ(only(graph).name, name);
    }
}

TEST(DeviceListTest, NamesTheTransport)
{
    const GraphProperties none;
    const auto pci = [](const QString& driver) {
        return GraphProperties{{u"device.bus"_s, u"pci"_s}, {u"alsa.driver_name"_s, driver}};
    };
    for (const auto& [transport, node, card] : std::vector<std::tuple<QString, GraphProperties, GraphProperties>>{
             {u"usb"_s, none, {{u"device.bus"_s, u"usb"_s}}},
             {u"usb"_s, {{u"device.bus"_s, u"usb"_s}}, none},
             {u"built-in"_s, none, pci(u"snd_hda_intel"_s)},
             {u"built-in"_s, none, pci(u"sof-audio-pci-intel-tgl"_s)},
             {u"built-in"_s, none, pci(u"snd_soc_skl"_s)},
             {u"built-in"_s, none, pci(u"snd_acp_pci"_s)},
             {u"built-in"_s, none, {{u"device.api"_s, u"alsa"_s}, {u"alsa.driver_name"_s, u"snd_soc_core"_s}}},
             {u"other"_s, none, pci(u"snd_hdsp"_s)},
             {u"other"_s, none, {{u"device.bus"_s, u"firewire"_s}}},
             {u"display"_s, {{u"device.profile.name"_s, u"hdmi-stereo"_s}}, pci(u"snd_hda_intel"_s)},
             {u"bluetooth"_s, none, {{u"device.api"_s, u"bluez5"_s}}},
             {u"bluetooth"_s, {{u"node.name"_s, u"bluez_input.00"_s}}, none},
             {u"aggregate"_s, {{u"node.group"_s, u"combine-stream-3"_s}}, none},
             {u"other"_s, {{u"node.name"_s, u"rtp-source"_s}}, none},
             {u"other"_s, {{u"media.name"_s, u"ROC Source"_s}}, none},
             {u"other"_s, {{u"node.network"_s, u"true"_s}}, none},
             {u"virtual"_s, none, none},
         }) {
        GraphSnapshot graph;
        addNode(graph, u"node"_s, node);
        if (!card.isEmpty()) {
            graph.cards.push_back({.id = cardId, .properties = card, .routes = {}});
            graph.nodes.front().properties.insert(u"device.id"_s, QString::number(cardId));
        }
        EXPECT_EQ(only(graph).transport, transport) << qPrintable((node.values() + card.values()).join(u' '));
    }
}

TEST(DeviceListTest, NamesTheTerminalOfTheNodesOwnInput)
{
    for (const auto& [type, terminal] : {std::pair{u"mic"_s, u"microphone"_s}, {u"headset"_s, u"microphone"_s},
             {u"handset-mic"_s, u"microphone"_s}, {u"Line"_s, u"line"_s}, {u"spdif"_s, u"digital"_s},
             {u"iec958"_s, u"digital"_s}, {u"aes"_s, u"digital"_s}, {u"aux"_s, u"unknown"_s}, {u""_s, u"unknown"_s}}) {
        GraphSnapshot graph;
        graph.cards.push_back({.id = cardId,
            .properties = {},
            .routes = {{false, 4, u"spdif"_s}, {true, 3, u"line"_s}, {true, 4, type}}});
        addNode(graph, u"node"_s, {{u"device.id"_s, u"30"_s}, {u"card.profile.device"_s, u"4"_s}});
        EXPECT_EQ(only(graph).inputTerminal, terminal) << qPrintable(type);
    }
}

TEST(DeviceListTest, CountsChannelsByPortsAndNoMonitors)
{
    const GraphPort input{.isInput = true, .isAudio = true};
    const GraphPort output{.isAudio = true};
    const GraphPort monitor{.isMonitor = true, .isAudio = true};
    GraphSnapshot graph;
    addNode(graph, u"source"_s, {{u"audio.channels"_s, u"2"_s}});
    addPorts(graph, 8, output);
    addPorts(graph, 1, GraphPort{});
    addNode(graph, u"sink"_s, {}, u"Audio/Sink"_s);
    addPorts(graph, 2, input);
    addPorts(graph, 2, monitor);
    addNode(graph, u"duplex"_s, {}, u"Audio/Duplex"_s);
    addPorts(graph, 4, input);
    addPorts(graph, 4, monitor);
    addPorts(graph, 6, output);
    addNode(graph, u"without ports yet"_s, {{u"audio.channels"_s, u"4"_s}}, u"Audio/Source/Virtual"_s);
    addNode(graph, u"without a format"_s, {{u"audio.channels"_s, u"0"_s}});
    std::vector<std::pair<int, int>> channels;
    for (const auto& [device, serial] : DeviceList::entries(graph)) {
        channels.emplace_back(device.inputChannels, device.outputChannels);
    }
    EXPECT_EQ(channels, (std::vector<std::pair<int, int>>{{8, 0}, {0, 2}, {6, 4}, {4, 0}, {2, 0}}));
}

TEST(DeviceListTest, KnowsTheRateBestFromWhatRuns)
{
    GraphSnapshot graph;
    graph.graphRate = 32'000;
    addNode(graph, u"mixer"_s);
    GraphNode& node = graph.nodes.front();
    EXPECT_EQ(only(graph).sampleRate, 32'000);
    graph.rememberedRates.insert(u"mixer"_s, 44'100);
    EXPECT_EQ(only(graph).sampleRate, 44'100);
    node.fixedFormat = 96'000;
    node.format = 88'200;
    EXPECT_EQ(only(graph).sampleRate, 96'000) << "a format that was left behind says nothing";
    node.running = true;
    EXPECT_EQ(only(graph).sampleRate, 88'200);
}

}  // namespace vantiro
