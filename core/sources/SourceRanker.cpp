// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/SourceRanker.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace vantiro::SourceRanker {

using namespace Qt::Literals::StringLiterals;

namespace {

    struct Words {
        Q_DECLARE_TR_FUNCTIONS(SourceRanker)
    };

    constexpr float lineLevelDB = -24;

    bool isVirtual(const SourceObservation& observation)
    {
        return observation.transport == "virtual"_L1;
    }

    bool isHeard(const SourceObservation& observation)
    {
        return observation.peakDB && *observation.peakDB >= heardDB;
    }

    QString wholeDB(float level)
    {
        // Halves go to the even neighbour, as C prints them; Qt's own formatting rounds them away from zero.
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), "%.0f", static_cast<double>(level));
        return QString::fromLatin1(text.data());
    }

    void earn(RankedSource& source, std::int64_t points, const QString& reason)
    {
        source.score += points;
        source.reasons.append(reason);
    }

    void scoreApp(RankedSource& source)
    {
        const SourceObservation& app = source.observation;
        if (!app.isKnownDJApp) {
            source.score = app.isPlaying ? 3 : 0;
        } else if (app.isPlaying) {
            earn(source, 65, Words::tr("playing on this Mac"));
        } else {
            earn(source, 30, Words::tr("open, not playing"));
        }
    }

    void scoreDevice(RankedSource& source)
    {
        const SourceObservation& device = source.observation;
        if (device.steadyTone) {
            earn(source, 1, Words::tr("steady tone, looks like DVS timecode"));
            return;
        }
        if (device.isMicrophone()) {
            earn(source, isHeard(device) ? 15 : 5, Words::tr("microphone"));
            return;
        }
        source.score = isVirtual(device) ? 5 : 40;
        if (device.channels >= 2) {
            earn(source, 10, Words::tr("stereo"));
        }
        if (!isHeard(device)) {
            return;
        }
        const QString peak = wholeDB(*device.peakDB);
        if (*device.peakDB >= lineLevelDB) {
            earn(source, 40, Words::tr("line-level signal, peak %1 dB").arg(peak));
        } else {
            earn(source, 10, Words::tr("weak signal, peak %1 dB").arg(peak));
        }
    }

    RankedSource scored(const SourceObservation& observation, const std::optional<SourceRef>& remembered)
    {
        RankedSource source{.observation = observation};
        if (observation.ref.kind == SourceRef::Kind::app) {
            scoreApp(source);
        } else {
            scoreDevice(source);
        }
        if (remembered == observation.ref) {
            earn(source, 100, Words::tr("your choice for this hardware"));
        }
        return source;
    }

    bool qualifies(const SourceObservation& observation)
    {
        if (observation.ref.kind == SourceRef::Kind::app) {
            return observation.isKnownDJApp;
        }
        return !observation.isMicrophone() && !observation.steadyTone
            && (!isVirtual(observation) || isHeard(observation));
    }

}  // namespace

std::vector<RankedSource> rank(
    std::span<const SourceObservation> observations, const std::optional<SourceRef>& remembered)
{
    std::vector<RankedSource> ranked;
    ranked.reserve(observations.size());
    for (const SourceObservation& observation : observations) {
        // The remembered source always scores.
        if (RankedSource source = scored(observation, remembered); source.score >= 1) {
            ranked.push_back(std::move(source));
        }
    }
    std::ranges::stable_sort(ranked, [](const RankedSource& left, const RankedSource& right) {
        return left.score != right.score ? left.score > right.score : left.observation.name < right.observation.name;
    });
    return ranked;
}

std::optional<RankedSource> automaticPick(std::span<const RankedSource> ranked)
{
    const auto found = std::ranges::find_if(ranked, qualifies, &RankedSource::observation);
    return found == ranked.end() ? std::nullopt : std::optional(*found);
}

QStringList deviceNames(std::span<const RankedSource> ranked)
{
    QStringList names;
    for (const RankedSource& source : ranked) {
        if (source.observation.ref.kind == SourceRef::Kind::device) {
            names << source.observation.name;
        }
    }
    return names;
}

}  // namespace vantiro::SourceRanker
