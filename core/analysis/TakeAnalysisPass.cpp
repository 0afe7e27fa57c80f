// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/BlockLevels.h"
#include "core/analysis/TakeAnalysis.h"
#include "core/analysis/TakePass.h"

#include <utility>

namespace vantiro {

Result<TakeAnalysis::Both> TakeAnalysis::analyze(
    const QString& path, const Options& options, std::int64_t overviewSlices, const Progress& progress)
{
    const auto reader = TakeReader::open(path);
    if (!reader) {
        return std::unexpected(reader.error());
    }
    Result<ScannedTake> scanned = scanTake(**reader, options.clipGap, overviewSlices, progress);
    if (!scanned) {
        return std::unexpected(scanned.error());
    }
    const TakeReader::Format& format = (*reader)->format();
    const auto seconds = [&](std::int64_t frames) { return static_cast<double>(frames) / format.sampleRate; };
    const BlockLevels levels(
        std::move(scanned->power), std::move(scanned->peak), seconds(scanned->blockFrames), seconds(scanned->frames));
    TakeAnalysis analysis;
    analysis.seconds = levels.totalSeconds();
    analysis.sampleRate = format.sampleRate;
    analysis.channels = format.channels;
    analysis.rmsDB = levels.rmsPerSecond();
    analysis.peakDB = levels.peakPerSecond();
    for (const FrameRun& run : scanned->clipRuns) {
        analysis.clips.push_back({.start = seconds(run.start), .duration = seconds(run.end - run.start)});
    }
    analysis.clippedSamples = scanned->clippedSamples;
    analysis.silences = levels.findSilences(options);
    analysis.loudness = scanned->loudness;
    analysis.moments = levels.findMoments(analysis.clips, analysis.silences, options);
    return Both{.analysis = std::move(analysis), .overview = std::move(scanned->overview)};
}

}  // namespace vantiro
