// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/DeviceList.h"

#include "core/foundation/CleanText.h"

#include <QDir>
#include <QFile>
#include <QHash>

#include <array>
#include <ranges>

namespace vantiro::DeviceList {

namespace {

    using namespace Qt::StringLiterals;

    constexpr std::int64_t usualChannels = 2;

    /// What a node says of itself, or else what its card says.
    QString property(const GraphNode& node, const GraphCard* card, const QString& key)
    {
        const QString own = node.properties.value(key);
        return own.isEmpty() && card != nullptr ? card->properties.value(key) : own;
    }

    bool startsWithAny(const QString& text, std::initializer_list<QLatin1StringView> beginnings)
    {
        return std::ranges::any_of(beginnings, [&](QLatin1StringView beginning) { return text.startsWith(beginning); });
    }

    /// The kernel marks what hangs behind an outside port of the machine; a card behind one is no part of the board.
    bool isExternalPci(const QString& sysfsPath)
    {
        QDir folder(u"/sys"_s + sysfsPath);
        for (int level = 0; level < 16 && folder.path().startsWith(u"/sys/devices/"_s); ++level) {
            QFile removable(folder.filePath(u"removable"_s));
            if (removable.open(QIODevice::ReadOnly) && removable.readAll().trimmed() == "removable") {
                return true;
            }
            if (!folder.cdUp()) {
                break;
            }
        }
        return false;
    }

    QString pciTransport(const GraphNode& node, const GraphCard* card)
    {
        if (isExternalPci(property(node, card, u"device.sysfs.path"_s))) {
            return u"thunderbolt"_s;
        }
        const QString driver = property(node, card, u"alsa.driver_name"_s);
        const bool onBoard = startsWithAny(
            driver, {"snd_hda_intel"_L1, "snd_soc_"_L1, "snd_sof"_L1, "sof-"_L1, "sof_"_L1, "snd_acp"_L1});
        return onBoard ? u"built-in"_s : u"other"_s;
    }

    QString transportOf(const GraphNode& node, const GraphCard* card)
    {
        const QString name = node.properties.value(u"node.name"_s);
        const QString api = property(node, card, u"device.api"_s);
        const QString bus = property(node, card, u"device.bus"_s);
        if (api.startsWith("bluez"_L1) || bus == "bluetooth"_L1 || name.startsWith("bluez_"_L1)) {
            return u"bluetooth"_s;
        }
        if (node.properties.value(u"node.group"_s).startsWith("combine"_L1)
            || node.properties.value(u"node.link-group"_s).startsWith("combine"_L1)) {
            return u"aggregate"_s;
        }
        if (node.properties.value(u"node.network"_s) == "true"_L1
            || startsWithAny(name, {"rtp"_L1, "roc"_L1, "raop"_L1})
            || startsWithAny(node.properties.value(u"media.name"_s), {"RTP"_L1, "ROC"_L1, "RAOP"_L1})) {
            return u"other"_s;
        }
        const QString profile = property(node, card, u"device.profile.name"_s);
        if (startsWithAny(profile, {"hdmi"_L1, "displayport"_L1})) {
            return u"display"_s;
        }
        if (bus == "usb"_L1) {
            return u"usb"_s;
        }
        if (bus == "pci"_L1) {
            return pciTransport(node, card);
        }
        if (bus.isEmpty() && api.isEmpty() && card == nullptr) {
            return u"virtual"_s;
        }
        // Sound that is part of a small board hangs on no bus that has a name.
        return bus.isEmpty() && property(node, card, u"alsa.driver_name"_s).startsWith("snd_soc_"_L1) ? u"built-in"_s
                                                                                                      : u"other"_s;
    }

    QString terminalFromPortType(const QString& type)
    {
        if (startsWithAny(type, {"mic"_L1, "headset"_L1, "handset"_L1})) {
            return u"microphone"_s;
        }
        if (type.startsWith("line"_L1)) {
            return u"line"_s;
        }
        if (startsWithAny(type, {"spdif"_L1, "iec958"_L1, "aes"_L1})) {
            return u"digital"_s;
        }
        return u"unknown"_s;
    }

    QString terminalOf(const GraphNode& node, const GraphCard* card)
    {
        if (card == nullptr) {
            return u"unknown"_s;
        }
        bool known = false;
        const int device = node.properties.value(u"card.profile.device"_s).toInt(&known);
        for (const GraphRoute& route : card->routes) {
            if (route.isInput && known && route.profileDevice == device) {
                return terminalFromPortType(route.portType.toLower());
            }
        }
        return u"unknown"_s;
    }

    /// "1/48000", as nodes write the rate that they want to run at.
    std::optional<double> rateFromFraction(const QString& text)
    {
        const qsizetype slash = text.indexOf(u'/');
        bool valid = false;
        const double rate = text.mid(slash + 1).toDouble(&valid);
        return valid && rate > 0 ? std::optional(rate) : std::nullopt;
    }

    double nominalRate(const GraphNode& node, const GraphSnapshot& graph)
    {
        if (node.running && node.format) {
            return *node.format;
        }
        if (node.fixedFormat) {
            return *node.fixedFormat;
        }
        if (const auto declared = rateFromFraction(node.properties.value(u"node.rate"_s))) {
            return *declared;
        }
        return graph.rememberedRates.value(node.properties.value(u"node.name"_s), graph.graphRate);
    }

    std::int64_t channelsOf(const GraphSnapshot& graph, const GraphNode& node, bool isInputPort)
    {
        const auto ports = static_cast<std::int64_t>(graph.audioPorts(node.id, isInputPort).size());
        if (ports > 0) {
            return ports;
        }
        bool known = false;
        const std::int64_t declared = node.properties.value(u"audio.channels"_s).toLongLong(&known);
        return known && declared > 0 ? declared : usualChannels;
    }

}  // namespace

QString uidFromName(const QString& name)
{
    QString uid;
    for (qsizetype index = 0; index < name.size(); ++index) {
        const QChar character = name[index];
        const bool appColon = index == 3 && name.startsWith("app:"_L1);
        const char16_t code = character.unicode();
        if (code < 0x20 || code == 0x7f || character == u'|' || character == u'%' || appColon) {
            uid += QStringLiteral("%%1").arg(int(code), 2, 16, QLatin1Char('0')).toUpper();
        } else {
            uid += character;
        }
    }
    return uid;
}

QString nameFromUid(const QString& uid)
{
    const qsizetype mark = uid.lastIndexOf(u'#');
    bool isNumbered = false;
    uid.mid(mark + 1).toUInt(&isNumbered);
    return mark > 0 && isNumbered ? QString() : QString::fromUtf8(QByteArray::fromPercentEncoding(uid.toUtf8()));
}

std::vector<Entry> entries(const GraphSnapshot& graph)
{
    std::vector<Entry> found;
    QHash<QString, int> seen;
    for (const GraphNode& node : graph.nodes) {
        const QString mediaClass = node.properties.value(u"media.class"_s);
        const bool isSource = mediaClass.startsWith("Audio/Source"_L1);
        const bool isSink = mediaClass.startsWith("Audio/Sink"_L1);
        const bool isDuplex = mediaClass.startsWith("Audio/Duplex"_L1);
        const QString name = node.properties.value(u"node.name"_s);
        if ((!isSource && !isSink && !isDuplex) || name.isEmpty()) {
            continue;
        }
        bool onCard = false;
        const std::uint32_t cardId = node.properties.value(u"device.id"_s).toUInt(&onCard);
        const GraphCard* card = onCard ? graph.cardWithId(cardId) : nullptr;

        const int count = ++seen[name];
        AudioDevice device;
        device.uid = count == 1 ? uidFromName(name) : uidFromName(name) + u'#' + QString::number(count);
        device.name = cleanText(node.properties.value(u"node.description"_s));
        if (device.name.isEmpty()) {
            device.name = device.uid;
        }
        device.transport = transportOf(node, card);
        device.inputChannels = isSink ? 0 : channelsOf(graph, node, false);
        device.outputChannels = isSource ? 0 : channelsOf(graph, node, true);
        device.sampleRate = nominalRate(node, graph);
        device.inputTerminal = isSink ? u"unknown"_s : terminalOf(node, card);
        found.push_back({.device = std::move(device), .serial = node.serial});
    }
    return found;
}

}  // namespace vantiro::DeviceList
