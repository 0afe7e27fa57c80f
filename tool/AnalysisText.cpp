// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/AnalysisText.h"

#include "core/analysis/KWeighting.h"
#include "core/analysis/ReviewRequest.h"
#include "core/foundation/Decibels.h"
#include "core/foundation/Numbers.h"
#include "tool/TakesText.h"
#include "tool/Terminal.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <span>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using Moment = TakeAnalysis::Moment;

    struct AnalysisWords {
        Q_DECLARE_TR_FUNCTIONS(AnalysisText)
    };

    /// So many moments of all kinds are listed one by one, which leaves a set a dozen lines.
    constexpr std::size_t mostListed = 4;

    QString figureRow(const QString& title, const QString& content)
    {
        return u"  %1 %2"_s.arg(title, -9).arg(content);
    }

    QString detail(const QString& time, const QString& content)
    {
        return u"            %1  %2"_s.arg(time, content);
    }

    QString levelText(float level)
    {
        return AnalysisWords::tr("%1 dB").arg(Decibels::text(level));
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
            return AnalysisWords::tr("%1 ms").arg(std::max<qint64>(1, std::llround(seconds * 1000)));
        }
        return seconds < minute - 0.05 ? AnalysisWords::tr("%1 s").arg(seconds, 0, 'f', 1)
                                       : Terminal::clockText(seconds);
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
            return AnalysisWords::tr("%1 at full scale").arg(durationText(moment.clippedSeconds));
        case Moment::Kind::silence:
            return durationText(moment.duration);
        case Moment::Kind::drop:
            return change
                ? AnalysisWords::tr("%1 for %2").arg(changeText(*change), durationText(moment.duration))
                : AnalysisWords::tr("at %1 for %2").arg(levelText(moment.levelDuringDB), durationText(moment.duration));
        case Moment::Kind::jump:
            break;
        }
        return change ? AnalysisWords::tr("%1, from %2 to %3")
                            .arg(changeText(*change), levelText(*moment.levelBeforeDB), levelText(moment.levelDuringDB))
                      : AnalysisWords::tr("to %1").arg(levelText(moment.levelDuringDB));
    }

    struct MomentRow {
        QString title;
        std::vector<Moment> moments;
        QString sum;             ///< Tells what there is if there is any.
        std::size_t listed = 0;  ///< So many of the moments get a line of their own.
    };

    std::vector<Moment> ofKind(const TakeAnalysis& analysis, Moment::Kind kind)
    {
        std::vector<Moment> moments;
        std::ranges::copy_if(analysis.moments, std::back_inserter(moments),
            [kind](const Moment& moment) { return moment.kind == kind; });
        return moments;
    }

    /// Gives the lines out in turn, so that each kind of moment comes before many of one.
    void shareLines(std::span<MomentRow> rows)
    {
        std::size_t left = mostListed;
        for (std::size_t before = 0; before != left;) {
            before = left;
            for (MomentRow& kind : rows) {
                if (left > 0 && kind.listed < kind.moments.size()) {
                    ++kind.listed;
                    --left;
                }
            }
        }
    }

    void addMoments(QStringList& lines, MomentRow kind)
    {
        if (kind.moments.empty()) {
            lines << figureRow(kind.title, AnalysisWords::tr("none"));
            return;
        }
        const bool isAll = kind.listed == kind.moments.size();
        lines << figureRow(
            kind.title, isAll ? kind.sum + u':' : AnalysisWords::tr("%1, the worst of them:").arg(kind.sum));
        std::ranges::stable_sort(kind.moments, std::ranges::greater(), severity);
        kind.moments.resize(kind.listed);
        std::ranges::stable_sort(kind.moments, {}, &Moment::start);
        for (const Moment& moment : kind.moments) {
            lines << detail(Terminal::clockText(std::round(moment.start)), momentText(moment));
        }
    }

    QString peakText(const TakeAnalysis& analysis)
    {
        const auto highest = std::ranges::max_element(analysis.peakDB);
        if (highest == analysis.peakDB.end() || *highest <= silenceDB) {
            return AnalysisWords::tr("none, the take is silent");
        }
        return AnalysisWords::tr("%1 at %2")
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
        lines << figureRow(
            AnalysisWords::tr("Level"), AnalysisWords::tr("typically %1").arg(levelText(static_cast<float>(*typical))));
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
        lines.last() += AnalysisWords::tr(", loudest minute %1 at %2, quietest %3 at %4")
                            .arg(levelText(*loudest), time(loudest), levelText(*quietest), time(quietest));
    }

    MomentRow clippingRow(const TakeAnalysis& analysis)
    {
        std::vector<Moment> clips = ofKind(analysis, Moment::Kind::clip);
        const auto count = static_cast<int>(clips.size());
        const double seconds = std::accumulate(clips.begin(), clips.end(), 0.0,
            [](double sum, const Moment& moment) { return sum + moment.clippedSeconds; });
        return {AnalysisWords::tr("Clipping"), std::move(clips),
            AnalysisWords::tr("%1 places, %2 an hour, %3 in all", nullptr, count)
                .arg(groupedNumber(count))
                .arg(analysis.clipsPerHour(), 0, 'f', 1)
                .arg(durationText(seconds))};
    }

    MomentRow silencesRow(const TakeAnalysis& analysis)
    {
        std::vector<Moment> silences = ofKind(analysis, Moment::Kind::silence);
        const auto count = static_cast<int>(silences.size());
        return {AnalysisWords::tr("Dead air"), std::move(silences),
            AnalysisWords::tr("%1 in %2 silences", nullptr, count)
                .arg(durationText(analysis.deadAirSeconds()), groupedNumber(count))};
    }

    MomentRow changesRow(const TakeAnalysis& analysis, const QString& title, Moment::Kind kind)
    {
        std::vector<Moment> moments = ofKind(analysis, kind);
        const QString count = groupedNumber(std::ssize(moments));
        return {title, std::move(moments), count};
    }

}  // namespace

QString loudnessText(const TakeAnalysis& analysis)
{
    if (analysis.loudness) {
        return AnalysisWords::tr("%1 LUFS").arg(Decibels::text(static_cast<float>(*analysis.loudness)));
    }
    return analysis.sampleRate < KWeighting::lowestRate ? AnalysisWords::tr("none, it means nothing below 4,000 Hz")
                                                        : AnalysisWords::tr("none, the take is too short or too quiet");
}

QStringList analysisText(const QString& fileName, const TakeAnalysis& analysis)
{
    QStringList lines{Terminal::safeName(fileName),
        figureRow(AnalysisWords::tr("Length"),
            AnalysisWords::tr("%1, %2, %3")
                .arg(Terminal::clockText(analysis.seconds), rateText(analysis.sampleRate),
                    channelsText(analysis.channels))),
        figureRow(AnalysisWords::tr("Loudness"), loudnessText(analysis)),
        figureRow(AnalysisWords::tr("Peak"), peakText(analysis))};
    addLevel(lines, analysis);
    std::array rows{clippingRow(analysis), silencesRow(analysis),
        changesRow(analysis, AnalysisWords::tr("Drops"), Moment::Kind::drop),
        changesRow(analysis, AnalysisWords::tr("Jumps"), Moment::Kind::jump)};
    shareLines(rows);
    for (MomentRow& kind : rows) {
        addMoments(lines, std::move(kind));
    }
    return lines;
}

}  // namespace vantiro
