// SPDX-License-Identifier: GPL-3.0-or-later
// The source, its menu and its channels.
#include "app/model/Desk.h"

#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace vantiro {

QString Desk::sourceLine() const
{
    if (m_model.detecting()) {
        return tr("Listening");
    }
    if (takeRuns()) {
        return tr("Recording from this source");
    }
    return m_model.selected() && !m_model.selectionIsManual() ? tr("Picked automatically") : QString();
}

QString Desk::sourceHint() const
{
    return sourceFixed() ? tr("The source is fixed while a take runs") : tr("Choose where the mix comes from");
}

bool Desk::sourceFixed() const
{
    return takeRuns() || m_model.starting();
}

/// Only a source has a colon in it, so that no device can take the name of another line.
QString Desk::Entry::id() const
{
    switch (kind) {
    case Kind::nothing:
        return {};
    case Kind::source:
        return QStringLiteral("source:") + source.descriptor();
    case Kind::detect:
        return QStringLiteral("detect");
    case Kind::guide:
        return QStringLiteral("guide");
    }
    std::unreachable();
}

std::vector<Desk::Entry> Desk::entries() const
{
    std::vector<Entry> entries;
    for (const RankedSource& source : m_model.sources()) {
        entries.push_back({.kind = Entry::Kind::source, .source = source.observation.ref});
    }
    if (entries.empty()) {
        entries.push_back({.kind = Entry::Kind::nothing});
    }
    if (m_model.isAdvanced()) {
        entries.push_back({.kind = Entry::Kind::detect});
    }
    entries.push_back({.kind = Entry::Kind::guide});
    return entries;
}

QVariantList Desk::sourceEntries() const
{
    QVariantList lines;
    for (std::size_t index = 0; const Entry& entry : entries()) {
        const auto text = QStringLiteral("text");
        QVariantMap line{{QStringLiteral("id"), entry.id()}};
        switch (entry.kind) {
        case Entry::Kind::nothing:
            line[text] = tr("Nothing connected yet. Press SETUP.");
            line[QStringLiteral("disabled")] = true;
            break;
        case Entry::Kind::source:
            // A name is a stranger's, and a menu's line is one line.
            line[text] = m_model.sources()[index].observation.name.simplified();
            line[QStringLiteral("lens")] = true;
            line[QStringLiteral("lit")] = m_model.selected() == entry.source;
            break;
        case Entry::Kind::detect:
            line[text] = tr("Detect Again");
            break;
        case Entry::Kind::guide:
            line[text] = tr("Open the setup guide");
            break;
        }
        lines << line;
        ++index;
    }
    return lines;
}

QString Desk::detectText() const
{
    return m_model.detecting() ? tr("Listening") : tr("Detect Again");
}

bool Desk::hasChannels() const
{
    return m_model.channelCount() > 2;
}

/// Of the pair that is really recorded: a stored one that the source does not have gives way to the first.
std::int64_t Desk::firstChannel() const
{
    const auto pair = m_model.channelsForSelection();
    return pair && !pair->empty() ? pair->front() : 1;
}

QString Desk::channels() const
{
    const auto& recorder = m_model.recorder();
    const bool isPair = recorder && recorder->channels.size() == 2;
    const std::int64_t first = isPair ? recorder->channels.front() : firstChannel();
    const std::int64_t second = isPair ? recorder->channels.back() : first + 1;
    return QStringLiteral("%1–%2").arg(first).arg(second);
}

bool Desk::canLowerChannels() const
{
    return !sourceFixed() && firstChannel() > 1;
}

bool Desk::canRaiseChannels() const
{
    return !sourceFixed() && firstChannel() + 1 < m_model.channelCount();
}

void Desk::detectAgain()
{
    if (!sourceFixed()) {
        m_flows.sources().detect(SourceWatch::Reason::asked);
    }
}

void Desk::chooseSourceEntry(const QString& id)
{
    const std::vector<Entry> lines = entries();
    const auto entry = std::ranges::find(lines, id, &Entry::id);
    if (entry == lines.end()) {
        return;
    }
    switch (entry->kind) {
    case Entry::Kind::nothing:
        break;
    case Entry::Kind::source:
        if (!sourceFixed()) {
            m_flows.sources().choose(entry->source);
        }
        break;
    case Entry::Kind::detect:
        detectAgain();
        break;
    case Entry::Kind::guide:
        openGuide();
        break;
    }
}

void Desk::stepChannels(int direction)
{
    constexpr std::int64_t pair = 2;
    const bool can = direction > 0 ? canRaiseChannels() : canLowerChannels();
    if (can) {
        // A pair of an odd number of channels may begin in the middle of another.
        const std::int64_t last = m_model.channelCount() - 1;
        m_model.setFirstChannelOfSelection(
            std::clamp<std::int64_t>(firstChannel() + (direction > 0 ? pair : -pair), 1, last));
    }
}

}  // namespace vantiro
