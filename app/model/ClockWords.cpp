// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/ClockWords.h"

#include <algorithm>

namespace vantiro::ClockWords {

namespace {

    using namespace Qt::Literals::StringLiterals;

    constexpr qint64 minute = 60;
    constexpr qint64 hour = 3600;
    constexpr double longestTime = 1e9;  ///< Seconds; beyond, the figures mean nothing.

    QString figures(qint64 value, int digits)
    {
        return u"%1"_s.arg(value, digits, 10, '0'_L1);
    }

}  // namespace

QString time(double seconds, Form form)
{
    const auto whole = seconds > 0 ? static_cast<qint64>(std::min(seconds, longestTime)) : 0;
    const bool hasHours = form == Form::full || whole >= hour;
    const QString minutes = figures(whole % hour / minute, hasHours || form == Form::deck ? 2 : 1);
    const QString tail = minutes + u':' + figures(whole % minute, 2);
    return hasHours ? QString::number(whole / hour) + u':' + tail : tail;
}

QString ofDeck(const DeckState& state, const QDateTime& now)
{
    switch (state.kind) {
    case DeckState::Kind::recording:
        return time(double(state.since.msecsTo(now)) / 1000, Form::deck);
    case DeckState::Kind::playing:
        return time(state.position, Form::deck);
    default:
        return time(0, Form::deck);
    }
}

}  // namespace vantiro::ClockWords
