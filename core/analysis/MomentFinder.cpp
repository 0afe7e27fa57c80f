// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/BlockLevels.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ranges>

namespace vantiro {

namespace {

    using Run = TakeAnalysis::Run;
    using Moment = TakeAnalysis::Moment;
    using Options = TakeAnalysis::Options;

    /// How far around the block where a change shows its edge may lie, in blocks.
    constexpr std::int64_t crossingReach = 80;
    /// A silence of exactly the shortest length counts in spite of rounding, in seconds.
    constexpr double silenceSlack = 1e-9;

    enum class Direction {
        falling,
        rising,
    };

    /// Blocks that lie beyond the recent level, from `from` up to but not including `to`.
    struct Stretch {
        std::int64_t from;
        std::int64_t to;
        double recent;  ///< The power a moment before.
    };

    class MomentFinder {
    public:
        MomentFinder(const BlockLevels& levels, const Options& options)
            : m_levels(levels)
            , m_options(options)
            , m_count(std::ssize(levels.power()))
            , m_recent(levels.baseline(options.context))
        { }

        [[nodiscard]] std::vector<Moment> clipMoments(std::span<const Run> clips) const;
        [[nodiscard]] std::vector<Moment> silenceMoments(std::span<const Run> silences) const;
        /// Falls of the level: drops, and jumps where it does not return for long.
        [[nodiscard]] std::vector<Moment> findDrops(std::span<const Run> silences) const;
        /// Rises of the level that last.
        [[nodiscard]] std::vector<Moment> findJumps(std::span<const Run> silences, std::span<const Moment> drops) const;

    private:
        [[nodiscard]] Moment moment(Moment::Kind kind, double start, double duration) const;
        [[nodiscard]] std::vector<Stretch> stretches(Direction direction) const;
        /// When the smoothed level crosses `middle`, as close to the block `centre` as it does.
        [[nodiscard]] std::optional<double> crossing(Direction direction, double middle, std::int64_t centre) const;
        /// When a change begins that shows first in the block `from`.
        [[nodiscard]] double edge(Direction direction, double middle, std::int64_t from) const;
        /// The typical power of a stretch, or of as much of it as a moment may last.
        [[nodiscard]] std::optional<double> typicalPower(const Stretch& stretch) const;
        [[nodiscard]] double smooth(std::int64_t block) const
        {
            return m_levels.smooth()[static_cast<std::size_t>(block)];
        }

        const BlockLevels& m_levels;
        const Options& m_options;
        std::int64_t m_count;
        std::vector<std::optional<double>> m_recent;  ///< The baseline.
    };

    Moment MomentFinder::moment(Moment::Kind kind, double start, double duration) const
    {
        const auto level = [this](double from, double to) -> std::optional<float> {
            const auto power = m_levels.meanPower(m_levels.blockIndex(from), m_levels.blockIndex(to));
            return power ? std::optional(BlockLevels::levelDB(*power)) : std::nullopt;
        };
        const double end = start + duration;
        return {
            .kind = kind,
            .start = start,
            .duration = duration,
            .levelBeforeDB = level(start - m_options.context, start),
            .levelDuringDB =
                level(start, std::max(end, start + m_levels.blockSeconds())).value_or(BlockLevels::levelDB(0)),
            .levelAfterDB = level(end, end + m_options.context),
            .peakDB = m_levels.peakDB(start, end),
        };
    }

    std::vector<Moment> MomentFinder::clipMoments(std::span<const Run> clips) const
    {
        std::vector<Moment> moments;
        for (auto first = clips.begin(); first != clips.end();) {
            double clipped = first->duration;
            auto next = first + 1;
            for (; next != clips.end() && next->start - (next - 1)->end() < m_options.clipGroup; ++next) {
                clipped += next->duration;
            }
            moments.push_back(moment(Moment::Kind::clip, first->start, (next - 1)->end() - first->start));
            moments.back().clippedSeconds = clipped;
            first = next;
        }
        return moments;
    }

    std::vector<Moment> MomentFinder::silenceMoments(std::span<const Run> silences) const
    {
        std::vector<Moment> moments;
        for (const Run& silence : silences) {
            moments.push_back(moment(Moment::Kind::silence, silence.start, silence.duration));
        }
        return moments;
    }

    std::vector<Stretch> MomentFinder::stretches(Direction direction) const
    {
        const bool falls = direction == Direction::falling;
        const float ratio = std::pow(10.0F, m_options.dropDB / (falls ? -10.0F : 10.0F));
        const float quiet = std::pow(10.0F, m_options.silenceDB / 10.0F);
        std::vector<Stretch> found;
        std::int64_t block = 0;
        while (block < m_count) {
            const std::optional<double>& base = m_recent[static_cast<std::size_t>(block / BlockLevels::blocksOfStep)];
            const double limit = base.value_or(0) * static_cast<double>(ratio);
            const auto isBeyond = [&](std::int64_t place) {
                return falls ? smooth(place) < limit : smooth(place) > limit;
            };
            // What follows a silence has no level to fall or rise from.
            if (!base || *base <= static_cast<double>(quiet) || !isBeyond(block)) {
                ++block;
                continue;
            }
            const std::int64_t from = block;
            while (block < m_count && isBeyond(block)) {
                ++block;
            }
            found.push_back({from, block, *base});
        }
        return found;
    }

    std::optional<double> MomentFinder::crossing(Direction direction, double middle, std::int64_t centre) const
    {
        const std::int64_t last = std::min(centre + crossingReach, m_count - 1);
        std::optional<std::int64_t> nearest;
        for (std::int64_t block = std::max<std::int64_t>(centre - crossingReach, 0); block < last; ++block) {
            const bool isAbove = smooth(block) >= middle;
            const bool crosses =
                isAbove != (smooth(block + 1) >= middle) && isAbove == (direction == Direction::falling);
            if (crosses && (!nearest || std::abs(block - centre) < std::abs(*nearest - centre))) {
                nearest = block;
            }
        }
        if (!nearest) {
            return std::nullopt;
        }
        const double from = smooth(*nearest);
        const double part = (from - middle) / (from - smooth(*nearest + 1));
        // A smoothed level stands for the middle of its block.
        return m_levels.blockSeconds() * (part + static_cast<double>(*nearest) + 0.5);
    }

    double MomentFinder::edge(Direction direction, double middle, std::int64_t from) const
    {
        const double atBlock = m_levels.blockSeconds() * static_cast<double>(from);
        const double time = std::max(crossing(direction, middle, from).value_or(atBlock), 0.0);
        return std::min(time, m_levels.totalSeconds());
    }

    std::optional<double> MomentFinder::typicalPower(const Stretch& stretch) const
    {
        return m_levels.medianPower(
            stretch.from, std::min(stretch.from + m_levels.blockIndex(m_options.maxDrop), stretch.to));
    }

    std::vector<Moment> MomentFinder::findDrops(std::span<const Run> silences) const
    {
        const double total = m_levels.totalSeconds();
        std::vector<Moment> drops;
        for (const Stretch& stretch : stretches(Direction::falling)) {
            // The middle of two powers, not of two levels in dB.
            const double middle = (stretch.recent + typicalPower(stretch).value_or(0)) * 0.5;
            const double start = edge(Direction::falling, middle, stretch.from);
            const bool returns = stretch.to < m_count;
            if (!returns && total - m_options.outro <= start) {
                continue;
            }
            const double end = returns ? edge(Direction::rising, middle, stretch.to) : total;
            const bool isSilence = std::ranges::any_of(
                silences, [&](const Run& silence) { return silence.start < end && start < silence.end(); });
            if (isSilence || end - start <= m_options.minDrop) {
                continue;
            }
            const bool lasts = end - start > m_options.maxDrop;
            drops.push_back(moment(
                lasts ? Moment::Kind::jump : Moment::Kind::drop, start, lasts ? m_options.maxDrop : end - start));
        }
        return drops;
    }

    std::vector<Moment> MomentFinder::findJumps(std::span<const Run> silences, std::span<const Moment> drops) const
    {
        std::vector<Run> busy(silences.begin(), silences.end());
        for (const Moment& drop : drops) {
            if (drop.kind == Moment::Kind::drop) {
                busy.push_back({drop.start, drop.duration});
            }
        }
        std::vector<Moment> jumps;
        for (const Stretch& stretch : stretches(Direction::rising)) {
            const double middle = (stretch.recent + typicalPower(stretch).value_or(stretch.recent)) * 0.5;
            const double start = edge(Direction::rising, middle, stretch.from);
            // A rise that fades away has no edge to look for, and its length is capped anyway.
            const double end =
                std::min(m_levels.blockSeconds() * static_cast<double>(stretch.to), m_levels.totalSeconds());
            const double length = std::min(end - start, m_options.maxDrop);
            // Soon after a silence or a drop the level only returns.
            const bool isReturn = std::ranges::any_of(
                busy, [&](const Run& run) { return run.start < start && run.end() > start - m_options.context; });
            if (!isReturn && length > m_options.minDrop) {
                jumps.push_back(moment(Moment::Kind::jump, start, length));
            }
        }
        return jumps;
    }

}  // namespace

std::vector<TakeAnalysis::Run> BlockLevels::findSilences(const TakeAnalysis::Options& options) const
{
    const float threshold = std::pow(10.0F, options.silenceDB / 20.0F);
    const auto isSilent = [threshold](float peak) { return peak < threshold; };
    const auto time = [this](auto block) {
        return std::min(m_blockSeconds * static_cast<double>(block - m_peak.begin()), m_totalSeconds);
    };
    std::vector<Run> silences;
    for (auto from = std::ranges::find_if(m_peak, isSilent); from != m_peak.end();) {
        const auto to = std::find_if_not(from, m_peak.end(), isSilent);
        const Run run{time(from), time(to) - time(from)};
        if (run.duration >= options.minSilence - silenceSlack) {
            silences.push_back(run);
        }
        from = std::find_if(to, m_peak.end(), isSilent);
    }
    return silences;
}

std::vector<TakeAnalysis::Moment> BlockLevels::findMoments(std::span<const TakeAnalysis::Run> clips,
    std::span<const TakeAnalysis::Run> silences, const TakeAnalysis::Options& options) const
{
    const MomentFinder finder(*this, options);
    std::vector<Moment> moments = finder.clipMoments(clips);
    const std::vector<Moment> drops = finder.findDrops(silences);
    for (const auto& more : {finder.silenceMoments(silences), drops, finder.findJumps(silences, drops)}) {
        moments.insert(moments.end(), more.begin(), more.end());
    }
    std::ranges::stable_sort(moments, {}, &Moment::start);
    return moments;
}

}  // namespace vantiro
