// SPDX-License-Identifier: GPL-3.0-or-later
// The take on the deck, its bar and its output.
#include "app/model/ClockWords.h"
#include "app/model/Desk.h"

#include <QVariantMap>

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantiro {

namespace {

    constexpr double shortStep = 5;  ///< Seconds.
    constexpr double longStep = 60;  ///< Seconds.
    /// Less of the whole than this is no way to go for the cap of a scrubber.
    constexpr double visibleFraction = 1.0 / 2000;

    QString barTime(double seconds)
    {
        return ClockWords::time(seconds, ClockWords::Form::brief);
    }

}  // namespace

QString Desk::playLastText() const
{
    if (takeRuns()) {
        return tr("Stop the take first");
    }
    return m_model.takes().empty() ? tr("No take yet") : tr("Play the Last Take");
}

QString Desk::playLastHint() const
{
    return playLastEnabled() ? tr("Play the last take on the deck") : QString();
}

bool Desk::playLastEnabled() const
{
    return !m_model.takes().empty() && !takeRuns() && !m_model.starting();
}

void Desk::playLastTake()
{
    if (const auto newest = m_model.newestTake()) {
        m_flows.playback().play(*newest);
    }
}

/// A take that is gone from its folder keeps its number as long as it plays.
int Desk::numberOfPlayed() const
{
    const auto& takes = m_model.takes();
    const auto played = std::ranges::find(takes, m_model.playing()->path, &Take::path);
    return played == takes.end() ? m_takeNumber : static_cast<int>(takes.end() - played);
}

QString Desk::pauseText() const
{
    return m_model.playbackPaused() ? tr("Play") : tr("Pause");
}

QString Desk::lengthText() const
{
    return barTime(m_model.playbackLength());
}

double Desk::playbackFraction() const
{
    const double length = m_model.playbackLength();
    return length > 0 ? std::clamp(m_model.playbackPosition() / length, 0.0, 1.0) : 0;
}

double Desk::playbackStep() const
{
    const double length = m_model.playbackLength();
    return length > 0 ? shortStep / length : 0;
}

void Desk::positionMoved()
{
    QString text = barTime(m_model.playbackPosition());
    const double fraction = playbackFraction();
    if (text != m_positionText || std::abs(fraction - m_playbackFraction) >= visibleFraction) {
        m_positionText = std::move(text);
        m_playbackFraction = fraction;
        Q_EMIT positionChanged();
    }
}

void Desk::togglePause()
{
    m_flows.playback().togglePause();
}

void Desk::stopPlayback()
{
    m_flows.playback().stopPlayback();
}

void Desk::seekPlayback(double fraction)
{
    m_flows.playback().seek(fraction);
}

void Desk::stepPlayback(double seconds)
{
    m_flows.playback().step(seconds);
}

bool Desk::pressPlaybackKey(int key, int modifiers, bool repeats)
{
    const Qt::KeyboardModifiers held(QFlag{modifiers});
    const bool hasShift = held.testFlag(Qt::ShiftModifier);
    const bool hasOther = (held & ~(Qt::ShiftModifier | Qt::KeypadModifier)) != Qt::NoModifier;
    const bool isArrow = key == Qt::Key_Left || key == Qt::Key_Right;
    if (m_phase != Phase::Playing || hasOther || !(isArrow || (key == Qt::Key_Space && !hasShift))) {
        return false;
    }
    if (isArrow) {
        const double seconds = hasShift ? longStep : shortStep;
        stepPlayback(key == Qt::Key_Left ? -seconds : seconds);
    } else if (!repeats) {
        togglePause();
    }
    return true;
}

std::vector<Desk::Output> Desk::outputs() const
{
    std::vector<Output> outputs{{.uid = {}, .name = {}, .text = tr("Default output")}};
    // Names are strangers', and a menu's line is one line.
    for (const AudioDevice& device : m_flows.playback().outputs()) {
        outputs.push_back({.uid = device.uid, .name = device.name, .text = device.name.simplified()});
    }
    const QString& chosen = m_model.playbackOutput();
    if (std::ranges::find(outputs, chosen, &Output::uid) == outputs.end()) {
        const QString name = m_model.playbackOutputName().isEmpty() ? chosen : m_model.playbackOutputName();
        outputs.push_back({.uid = chosen, .name = name, .text = tr("%1, not connected").arg(name.simplified())});
    }
    return outputs;
}

QVariantList Desk::outputEntries() const
{
    QVariantList lines;
    for (const Output& output : outputs()) {
        lines << QVariantMap{{QStringLiteral("id"), output.id()}, {QStringLiteral("text"), output.text},
            {QStringLiteral("lens"), true}, {QStringLiteral("lit"), output.uid == m_model.playbackOutput()}};
    }
    return lines;
}

void Desk::chooseOutput(const QString& id)
{
    const std::vector<Output> lines = outputs();
    if (const auto output = std::ranges::find(lines, id, &Output::id); output != lines.end()) {
        const bool isSame = output->uid == m_model.playbackOutput();
        m_model.setPlaybackOutput(output->uid, output->name);
        // It may have come back, or sound may have been led elsewhere.
        if (isSame) {
            m_flows.playback().useOutput();
        }
    }
}

}  // namespace vantiro
