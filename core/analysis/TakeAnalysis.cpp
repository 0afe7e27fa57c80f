// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/TakeAnalysis.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vantiro {

QString TakeAnalysis::Moment::id() const
{
    return rawValue(kind) + u'-' + QString::number(std::llround(start * 1000));
}

std::optional<float> TakeAnalysis::Moment::changeDB() const
{
    return levelBeforeDB ? std::optional(levelDuringDB - *levelBeforeDB) : std::nullopt;
}

std::int64_t TakeAnalysis::clipMoments() const
{
    return std::ranges::count(moments, Moment::Kind::clip, &Moment::kind);
}

double TakeAnalysis::clipsPerHour() const
{
    return seconds > 0 ? static_cast<double>(clipMoments()) / (seconds / 3600) : 0;
}

double TakeAnalysis::deadAirSeconds() const
{
    return std::accumulate(
        silences.begin(), silences.end(), 0.0, [](double sum, const Run& silence) { return sum + silence.duration; });
}

QString rawValue(TakeAnalysis::Moment::Kind kind)
{
    using Kind = TakeAnalysis::Moment::Kind;
    switch (kind) {
    case Kind::clip:
        return QStringLiteral("clip");
    case Kind::drop:
        return QStringLiteral("drop");
    case Kind::silence:
        return QStringLiteral("silence");
    case Kind::jump:
        return QStringLiteral("jump");
    }
    return {};
}

std::optional<TakeAnalysis::Moment::Kind> momentKind(QStringView rawValue)
{
    for (const auto kind : TakeAnalysis::Moment::allKinds) {
        if (rawValue == vantiro::rawValue(kind)) {
            return kind;
        }
    }
    return std::nullopt;
}

}  // namespace vantiro
