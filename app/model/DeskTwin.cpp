// SPDX-License-Identifier: GPL-3.0-or-later
// What the deck shows, for those who hear it.
#include "app/model/ClockWords.h"
#include "app/model/Desk.h"
#include "app/model/Figures.h"
#include "core/foundation/Decibels.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    /// What is heard takes its time, so that figures that change faster would only get in each other's way.
    constexpr std::chrono::seconds twinPeriod{1};

}  // namespace

/// The first change is told at once, the next ones together when a second is over.
void Desk::twinChanged()
{
    if (m_twinTimer) {
        m_twinIsOld = true;
        return;
    }
    m_twinTimer = m_flows.scheduler().every(twinPeriod, [this] {
        if (std::exchange(m_twinIsOld, false)) {
            renewTwin();
        } else {
            m_twinTimer.reset();
        }
    });
    renewTwin();
}

void Desk::renewTwin()
{
    if (const QString text = twinText(); std::exchange(m_deckTwin, text) != text) {
        Q_EMIT deckTwinChanged();
    }
}

QString Desk::twinText() const
{
    const DeckState state = m_model.deckState();
    const QString clock = ClockWords::ofDeck(state, m_flows.scheduler().wallClock());
    QStringList words;
    switch (state.kind) {
    case DeckState::Kind::noSource:
        return tr("Setup");
    case DeckState::Kind::ready:
        words << tr("Ready");
        break;
    case DeckState::Kind::listening:
        words << tr("Listening");
        break;
    case DeckState::Kind::starting:
        words << tr("Starting");
        break;
    case DeckState::Kind::recording:
        words << tr("Recording") << clock;
        break;
    case DeckState::Kind::playing:
        words << (state.paused ? tr("Paused") : tr("Playback")) << clock;
        break;
    }
    const MeterLevels& levels = m_model.shownLevels();
    const float peak = std::max(levels.holdLeft, levels.holdRight);
    words << (levels.clipped         ? tr("clipped")
            : !(peak > meterFloorDB) ? tr("no signal")
                                     : Figures::withMinus(tr("peak %1 dB").arg(Decibels::text(peak))));
    return words.join(u", "_s);
}

}  // namespace vantiro
