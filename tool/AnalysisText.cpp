// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/AnalysisText.h"

#include "core/analysis/ReviewRequest.h"
#include "core/foundation/Decibels.h"
#include "core/foundation/Numbers.h"
#include "tool/TakesText.h"
#include "tool/Terminal.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using Moment = TakeAnalysis::Moment;

    struct Words {
        Q_DECLARE_TR_FUNCTIONS(AnalysisText)
    };

    /// So many moments are listed one by one; of more, the worst few.
    constexpr std::size_t mostListed = 4;
    constexpr std::size_t worstListed = 3;
    constexpr double lowestRateWithLoudness = 4000;  // Hz

    QString row(const QString& title, const QString& content)
    {
        return u"  %1 %2"_s.arg(title, -9).arg(content);
    }

    QString detail(const QString& time, const QString& content)
    {
        return u"            %1  %2"_s.arg(time, content);
    }

    QString levelText(float level)
    {
        return Words::tr("%1 dB").arg(Decibels::text(level));
    }

    QString changeText(float change)
    {
        return (change > 0 ? u"+"_s : QString()) + levelText(change);
    }

    /// With as much detail as a length deserves.
    QString durationText(double seconds)
    {
        constexpr double minute = 60;
        if (seconds < 0.9995) {
            return Words::tr("%1 ms").arg(std::max<qint64>(1, std::llround(seconds * 1000)));
        }
        return seconds < minute - 0.05 ? Words::tr("%1 s").arg(seconds, 0, 'f', 1) : Terminal::clockText(seconds);
    }

    /// How much a listener suffers from it, among moments of one kind.
    double severity(const Moment& moment)
    {
        const double change = std::abs(static_cast<double>(moment.changeDB().value_or(0)));
        switch (moment.kind) {
        case Moment::Kind::clip:
            return moment.clippedSeconds;
        case Moment::Kind::drop:
            return moment.duration * change;
        case Moment::Kind::silence:
            return moment.duration;
        case Moment::Kind::jump:
            break;
        }
        return change;
    }

    QString momentText(const Moment& moment)
    {
        const auto change = moment.changeDB();
        switch (moment.kind) {
        case Moment::Kind::clip:
            return Words::tr("%1 at full scale").arg(durationText(moment.clippedSeconds));
        case Moment::Kind::silence:
            return durationText(moment.duration);
        case Moment::Kind::drop:
            return change
                ? Words::tr("%1 for %2").arg(changeText(*change), durationText(moment.duration))
                : Words::tr("at %1 for %2").arg(levelText(moment.levelDuringDB), durationText(moment.duration));
        case Moment::Kind::jump:
            break;
        }
        return change ? Words::tr("%1, from %2 to %3")
                            .arg(changeText(*change), levelText(*moment.levelBeforeDB), levelText(moment.levelDuringDB))
                      : Words::tr("to %1").arg(levelText(moment.levelDuringDB));
    }

    std::vector<Moment> ofKind(const TakeAnalysis& analysis, Moment::Kind kind)
    {
        std::vector<Moment> moments;
        std::ranges::copy_if(analysis.moments, std::back_inserter(moments),
            [kind](const Moment& moment) { return moment.kind == kind; });
        return moments;
    }

    /// A row for one kind of moment, and the moments below it. `sum` tells what there is if there is any.
    void addMoments(QStringList& lines, const QString& title, const QString& sum, std::vector<Moment> moments)
    {
        if (moments.empty()) {
            lines << row(title, Words::tr("none"));
            return;
        }
        const bool isMany = moments.size() > mostListed;
        lines << row(title, isMany ? Words::tr("%1, the worst of them:").arg(sum) : sum + u':');
        if (isMany) {
            std::ranges::stable_sort(moments, std::ranges::greater(), severity);
            moments.resize(worstListed);
            std::ranges::stable_sort(moments, {}, &Moment::start);
        }
        for (const Moment& moment : moments) {
            lines << detail(Terminal::clockText(std::round(moment.start)), momentText(moment));
        }
    }

    QString peakText(const TakeAnalysis& analysis)
    {
        const auto highest = std::ranges::max_element(analysis.peakDB);
        if (highest == analysis.peakDB.end() || *highest <= silenceDB) {
            return Words::tr("none, the take is silent");
        }
        return Words::tr("%1 at %2")
            .arg(levelText(*highest),
                Terminal::clockText(static_cast<double>(std::distance(analysis.peakDB.begin(), highest))));
    }

    /// Mean power of each whole minute that begins at a second, in dB.
    std::vector<float> minutes(const std::vector<float>& rmsDB)
    {
        constexpr std::size_t minute = 60;
        std::vector<double> sums{0};
        for (const float level : rmsDB) {
            sums.push_back(sums.back() + std::pow(10.0, static_cast<double>(level) / 10));
        }
        std::vector<float> levels;
        for (std::size_t start = 0; start + minute < sums.size(); ++start) {
            const double mean = (sums[start + minute] - sums[start]) / static_cast<double>(minute);
            levels.push_back(static_cast<float>(10 * std::log10(std::max(mean, 1e-12))));
        }
        return levels;
    }

    void addLevel(QStringList& lines, const TakeAnalysis& analysis)
    {
        const auto typical = ReviewRequest(analysis, 0).take.typicalLevelDB;
        if (!typical) {
            return;
        }
        lines << row(Words::tr("Level"), Words::tr("typically %1").arg(levelText(static_cast<float>(*typical))));
        // The fades at both ends are no news.
        constexpr std::ptrdiff_t edge = 120;
        constexpr std::ptrdiff_t least = 300;
        const std::vector<float> levels = minutes(analysis.rmsDB);
        if (std::ssize(levels) < 2 * edge + least) {
            return;
        }
        const auto [quietest, loudest] = std::minmax_element(levels.begin() + edge, levels.end() - edge);
        const auto time = [&](auto minute) {
            return Terminal::clockText(static_cast<double>(std::distance(levels.begin(), minute)));
        };
        lines.last() += Words::tr(", loudest minute %1 at %2, quietest %3 at %4")
                            .arg(levelText(*loudest), time(loudest), levelText(*quietest), time(quietest));
    }

    void addClipping(QStringList& lines, const TakeAnalysis& analysis)
    {
        const std::vector<Moment> clips = ofKind(analysis, Moment::Kind::clip);
        const auto count = static_cast<int>(clips.size());
        const double seconds = std::accumulate(clips.begin(), clips.end(), 0.0,
            [](double sum, const Moment& moment) { return sum + moment.clippedSeconds; });
        addMoments(lines, Words::tr("Clipping"),
            Words::tr("%1 places, %2 an hour, %3 in all", nullptr, count)
                .arg(groupedNumber(count))
                .arg(analysis.clipsPerHour(), 0, 'f', 1)
                .arg(durationText(seconds)),
            clips);
    }

    void addSilences(QStringList& lines, const TakeAnalysis& analysis)
    {
        const std::vector<Moment> silences = ofKind(analysis, Moment::Kind::silence);
        const auto count = static_cast<int>(silences.size());
        addMoments(lines, Words::tr("Dead air"),
            Words::tr("%1 in %2 silences", nullptr, count)
                .arg(durationText(analysis.deadAirSeconds()), groupedNumber(count)),
            silences);
    }

}  // namespace

QString loudnessText(const TakeAnalysis& analysis)
{
    if (analysis.loudness) {
        return Words::tr("%1 LUFS").arg(Decibels::text(static_cast<float>(*analysis.loudness)));
    }
    return analysis.sampleRate < lowestRateWithLoudness ? Words::tr("none, it means nothing below 4,000 Hz")
                                                        : Words::tr("none, the take is too short or too quiet");
}

QStringList analysisText(const QString& fileName, const TakeAnalysis& analysis)
{
    QStringList lines{Terminal::safeName(fileName),
        row(Words::tr("Length"),
            Words::tr("%1, %2, %3")
                .arg(Terminal::clockText(analysis.seconds), rateText(analysis.sampleRate),
                    channelsText(analysis.channels))),
        row(Words::tr("Loudness"), loudnessText(analysis)), row(Words::tr("Peak"), peakText(analysis))};
    addLevel(lines, analysis);
    addClipping(lines, analysis);
    addSilences(lines, analysis);
    for (const auto& [kind, title] :
        {std::pair(Moment::Kind::drop, Words::tr("Drops")), std::pair(Moment::Kind::jump, Words::tr("Jumps"))}) {
        const std::vector<Moment> moments = ofKind(analysis, kind);
        addMoments(lines, title, groupedNumber(static_cast<qint64>(moments.size())), moments);
    }
    return lines;
}

}  // namespace vantiro
