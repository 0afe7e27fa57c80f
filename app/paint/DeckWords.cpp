// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/paint/DeckWords.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace vantiro::DeckWords {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using Kind = DeckState::Kind;

    struct Words {
        Q_DECLARE_TR_FUNCTIONS(DeckWords)
    };

    bool hasHint(const DeckState& state)
    {
        return state.kind != Kind::noSource && state.kind != Kind::starting;
    }

}  // namespace

QString caption(const DeckState& state)
{
    switch (state.kind) {
    case Kind::noSource:
        return Words::tr("SETUP");
    case Kind::ready:
        return Words::tr("READY");
    case Kind::listening:
        return Words::tr("LISTENING");
    case Kind::starting:
        return Words::tr("STARTING");
    case Kind::recording:
        return Words::tr("REC");
    case Kind::playing:
        return state.paused ? Words::tr("PAUSED") : Words::tr("PLAYBACK");
    }
    return {};
}

QString hint(const DeckState& state)
{
    switch (state.kind) {
    case Kind::ready:
    case Kind::listening:
        return Words::tr("PRESS TO RECORD");
    case Kind::recording:
        return Words::tr("PRESS TO STOP");
    case Kind::playing:
        return state.paused ? Words::tr("PRESS TO PLAY") : Words::tr("PRESS TO PAUSE");
    default:
        return caption(state);
    }
}

QStringList hintLines(const DeckState& state)
{
    const QString text = hint(state);
    const auto space = text.lastIndexOf(' '_L1);
    if (!hasHint(state) || space < 0) {
        return {text};
    }
    return {text.first(space), text.sliced(space + 1)};
}

QString levelCaption(const MeterLevels& levels)
{
    if (levels.clipped) {
        return Words::tr("CLIPPED");
    }
    const float hold = std::max(levels.holdLeft, levels.holdRight);
    if (!(hold > meterFloorDB)) {
        return Words::tr("NO SIGNAL");
    }
    return Words::tr("PEAK %1 dB").arg(decibels(double{hold}, 1));
}

QString decibels(double levelDB, int digits)
{
    const double unit = std::pow(10, digits);
    // Adding 0 makes a plain zero of a negative one.
    return QString::number(std::round(levelDB * unit) / unit + 0.0, 'f', digits);
}

QString label(int number)
{
    return Words::tr("VANTIRO  ·  TAKE %1  ·  33 RPM  ·  24 BIT  ·  ").arg(number, 3, 10, '0'_L1);
}

}  // namespace vantiro::DeckWords
