// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/analysis/TakeOverview.h"
#include "core/foundation/Result.h"
#include "core/takes/Take.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace vantiro {

/// What is known of a finished take after one pass over its file. The keys of its JSON form are the fields' names.
struct TakeAnalysis {
    /// Stands in the cache file's name: whatever changes what an analysis means raises it.
    static constexpr int version = 1;

    /// A stretch of time.
    struct Run {
        double start = 0;     ///< Seconds from the start of the take.
        double duration = 0;  ///< Seconds.

        bool operator==(const Run&) const = default;

        [[nodiscard]] double end() const { return start + duration; }
    };

    /// A place that is worth a second look.
    struct Moment {
        enum class Kind {
            clip,
            drop,  ///< The level falls for a short time.
            silence,
            jump,  ///< The level changes for long.
        };
        static constexpr std::array allKinds{Kind::clip, Kind::drop, Kind::silence, Kind::jump};

        Kind kind = Kind::clip;
        double start = 0;                                   ///< Seconds.
        double duration = 0;                                ///< Seconds.
        std::optional<float> levelBeforeDB = std::nullopt;  ///< Mean level before it; absent at the edge of the take.
        float levelDuringDB = 0;
        std::optional<float> levelAfterDB = std::nullopt;
        float peakDB = 0;           ///< The highest peak during it.
        double clippedSeconds = 0;  ///< Of a clip, the summed length of its runs; else 0.

        bool operator==(const Moment&) const = default;

        /// Kind and start in milliseconds, "clip-1500".
        [[nodiscard]] QString id() const;
        /// By how much the level changes; absent at the start of a take.
        [[nodiscard]] std::optional<float> changeDB() const;
    };

    /// What counts as what.
    struct Options {
        float silenceDB = -50;  ///< A block is silent if its peak is below this.
        double minSilence = 2;  ///< Seconds: the shortest silence that counts.
        float dropDB = 6;       ///< How far from the recent level a change has to go.
        double minDrop = 1.5;   ///< Seconds: a change lasts longer than this.
        double maxDrop = 30;    ///< Seconds: a longer change is a jump; durations are capped here.
        double clipGap = 0.05;  ///< Seconds: clipped frames so close belong to one run.
        double clipGroup = 2;   ///< Seconds: runs closer than this are one moment.
        double context = 3;     ///< Seconds before and after a moment, and of the level that was a moment ago.
        double outro = 60;      ///< Seconds: a fall in the last stretch that never recovers is the end of the set.

        bool operator==(const Options&) const = default;
    };

    double seconds = 0;
    double sampleRate = 0;  ///< Hz
    std::int64_t channels = 0;
    std::vector<float> rmsDB;                       ///< Mean power of each second, at least -120.
    std::vector<float> peakDB;                      ///< Highest magnitude of each second, at least -120.
    std::vector<Run> clips;                         ///< In order of time.
    std::int64_t clippedSamples = 0;                ///< Each channel counted.
    std::vector<Run> silences;                      ///< In order of time.
    std::optional<double> loudness = std::nullopt;  ///< Integrated loudness in LUFS; absent if too short or too quiet.
    std::vector<Moment> moments;                    ///< In order of time.

    bool operator==(const TakeAnalysis&) const = default;

    /// Moments of clipping.
    [[nodiscard]] std::int64_t clipMoments() const;
    [[nodiscard]] double clipsPerHour() const;
    /// Summed silence.
    [[nodiscard]] double deadAirSeconds() const;

    /// Both results of one pass.
    struct Both;
    /// Asked and told now and then while a file is read, on any thread.
    struct Progress {
        std::function<bool()> cancelled = {};
        std::function<void(double part)> advanced = {};  ///< From 0 to 1.
    };

    /// Reads the file once, on as many threads as help. The result depends neither on threads nor on the processor.
    /// Fails as TakeReader does, and with a CaptureError "cancelled".
    [[nodiscard]] static Result<Both> analyze(
        const QString& path, const Options& options, std::int64_t overviewSlices, const Progress& progress);
    /// The analysis of a take from its cache, else computed with the usual options and then cached, together with its
    /// overview if that has no cache yet. A cache that cannot be read or written is passed over.
    [[nodiscard]] static Result<TakeAnalysis> load(const Take& take, const Progress& progress);
    /// "{stem}-{bytes}-v{version}.json" in the folder.
    [[nodiscard]] static QString cacheURL(const Take& take, const QString& folder);
    /// The folder of all cached analyses.
    [[nodiscard]] static QString cacheFolder();

    [[nodiscard]] QByteArray toJsonText() const;
    [[nodiscard]] static Result<TakeAnalysis> fromJsonText(const QByteArray& text);
};

struct TakeAnalysis::Both {
    TakeAnalysis analysis;
    TakeOverview overview;
};

/// "clip", "drop", "silence" or "jump". Any thread.
[[nodiscard]] QString rawValue(TakeAnalysis::Moment::Kind kind);
[[nodiscard]] std::optional<TakeAnalysis::Moment::Kind> momentKind(QStringView rawValue);

}  // namespace vantiro
