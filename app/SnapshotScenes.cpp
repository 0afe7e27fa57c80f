// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SnapshotScenes.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numbers>
#include <random>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;
    using Check = PreflightFinding::Check;
    using Severity = PreflightFinding::Severity;

    const QString deviceName = u"USB Audio Interface"_s;
    const SourceRef source = SourceRef::device(u"alsa_input.usb-audio-interface"_s);
    constexpr double sampleRate = 48'000;

    RankedSource ranked(const SourceRef& ref, const QString& name, std::int64_t channels)
    {
        return {.observation = {.ref = ref, .name = name, .channels = channels}};
    }

    void setFindings(AppModel& model, const PreflightFinding& level)
    {
        model.setFindings({{Check::source, Severity::ok, u"USB Audio Interface connected"_s}, level,
            {Check::sampleRate, Severity::ok, u"Sample rate 48,000 Hz"_s},
            {Check::disk, Severity::ok, u"31 hours of recording free"_s}});
    }

    /// A set that builds up and breaks down, each one in its own way.
    TakeOverview shape(std::size_t number, int clips)
    {
        TakeOverview overview;
        for (std::int64_t slice = 0; slice < TakeOverview::usualSlices; ++slice) {
            const double place = static_cast<double>(slice) / TakeOverview::usualSlices;
            const double seed = 3.1 * static_cast<double>(number);
            const double swell = 0.62 + 0.16 * std::sin(11 * place + seed) + 0.08 * std::sin(47 * place + 2 * seed);
            const double grain = 0.09 * std::sin(611 * place + seed) * std::sin(173 * place);
            const double fade = std::min({1.0, 30 * place + 0.1, 40 * (1 - place)});
            overview.peaks.push_back(static_cast<float>(std::clamp(fade * (swell + grain), 0.0, 0.95)));
        }
        for (int clip = 1; clip <= clips; ++clip) {
            const std::int64_t slice = TakeOverview::usualSlices * (2 * clip - 1) / (2 * clips + 1) + 37;
            overview.peaks[static_cast<std::size_t>(slice)] = 1;
            overview.clips.push_back(slice);
            overview.clippedSamples += std::int64_t{31} * clip;
        }
        return overview;
    }

    /// Takes that are nowhere on disk, the newest first, each with its shape.
    void listTakes(AppModel& model)
    {
        struct Evening {
            QDateTime start;
            std::chrono::seconds length;
            int clips;
        };
        const auto at = [](int month, int day, int hour, int minute) {
            return QDateTime(QDate(2026, month, day), QTime(hour, minute, 33)).toUTC();
        };
        const std::vector<Evening> evenings{
            {at(9, 25, 21, 4), 1h + 31min + 8s, 2},
            {at(9, 19, 22, 11), 58min + 40s, 0},
            {at(9, 12, 20, 47), 2h + 3min + 55s, 0},
            {at(9, 5, 21, 30), 44min + 2s, 1},
            {at(8, 29, 19, 15), 1h + 12min + 19s, 0},
            {at(8, 22, 23, 1), 36min + 51s, 0},
            {at(8, 15, 21, 58), 1h + 47min + 26s, 0},
        };
        std::vector<Take> takes;
        for (const Evening& evening : evenings) {
            const double seconds = static_cast<double>(evening.length.count());
            Take take{
                .path = u"/takes/mix-%1.caf"_s.arg(evening.start.toLocalTime().toString(u"yyyy-MM-dd_HH-mm-ss"_s)),
                .created = evening.start,
                .bytes = evening.length.count() * 48'000 * 6,
                .seconds = seconds,
                .sampleRate = sampleRate,
                .channels = 2};
            model.setOverview(take.path, shape(takes.size(), evening.clips));
            takes.push_back(std::move(take));
        }
        model.setTakes(std::move(takes));
        model.setTakesRead(true);
    }

    void connectSource(AppModel& model, std::int64_t channels)
    {
        listTakes(model);
        model.setSources(
            {ranked(source, deviceName, channels), ranked(SourceRef::app(u"org.mixxx.Mixxx"_s), u"Mixxx"_s, 2),
                ranked(SourceRef::device(u"alsa_input.pci-line"_s), u"Line In"_s, 2)});
        model.setDevices({{.uid = source.id, .name = deviceName, .inputChannels = channels, .sampleRate = sampleRate}});
        model.setSelected(source);
        model.setMeterFormat(AppModel::MeterFormat{.sampleRate = sampleRate, .channels = channels});
    }

    /// Twenty seconds of a beat with a voice in it, up to this peak.
    void hear(AppModel& model, float peakDB, void (AppModel::*push)(float) = &AppModel::pushHistory)
    {
        constexpr double beat = 60.0 / 126;
        std::minstd_rand random;
        std::uniform_real_distribution<double> grain(-2.2, 2.2);
        for (std::size_t index = 0; index < AppModel::historyLength; ++index) {
            const double time = static_cast<double>(index) / 30;
            const double sinceBeat = std::fmod(time, beat);
            const double kick = 6.5 * std::exp(-14 * sinceBeat);
            const double voice = 2.4 * std::sin(2 * std::numbers::pi * time / 6.1);
            const double level = std::min(0.0, -8 + kick + voice + grain(random));
            (model.*push)(peakDB + static_cast<float>(level));
        }
    }

    /// A take that runs for so long, to the tenth of a second, so that the clock in the picture stands.
    void record(AppModel& model, std::chrono::seconds elapsed, float peakDB)
    {
        RecorderState take;
        take.path = u"/takes/mix.caf"_s;
        take.deviceUID = source.descriptor();
        take.deviceName = deviceName;
        take.channels = {1, 2};
        take.startedAt = QDateTime::currentDateTimeUtc().addMSecs(-std::chrono::milliseconds(elapsed + 100ms).count());
        CaptureStats stats{.sampleRate = sampleRate, .channels = 2};
        stats.frames = static_cast<std::int64_t>(sampleRate) * elapsed.count();
        stats.audioSpan = static_cast<double>(elapsed.count());
        stats.hostSpan = stats.audioSpan / 1.000013;
        stats.peak = std::pow(10.0F, peakDB / 20);
        stats.writeErrors = 0;
        stats.clockChecked = true;
        take.stats = stats;
        // The same take with another beginning would tell nobody.
        model.setRecorder(std::nullopt);
        model.setRecorder(take);
        model.setTakeStats(stats);
    }

    void deckReady(AppModel& model)
    {
        connectSource(model, 2);
        setFindings(model, {Check::level, Severity::ok, u"Play a track."_s});
    }

    void deckRecording(AppModel& model)
    {
        connectSource(model, 2);
        setFindings(model, {Check::level, Severity::ok, u"Peaks at -6.4 dB"_s});
        hear(model, -6.4F);
        model.setLevels({.left = -8.6F, .right = -9.4F, .holdLeft = -6.4F, .holdRight = -7.1F});
        record(model, 42min + 17s, -6.4F);
    }

    void deckClipped(AppModel& model)
    {
        connectSource(model, 2);
        setFindings(model,
            {Check::level, Severity::blocker, u"Clipping: the signal reaches 0 dB"_s,
                u"Turn the master down on the controller or mixer."_s});
        hear(model, 0);
        model.setLevels({.left = -0.2F, .right = -1.1F, .holdLeft = 0, .holdRight = -0.3F, .clipped = true});
        record(model, 1h + 2min + 47s, 0);
    }

    /// The newest take is on the deck, at that place.
    void play(AppModel& model, double seconds)
    {
        hear(model, -5.2F, &AppModel::pushPlaybackHistory);
        model.setPlaybackLevels({.left = -7.9F, .right = -8.8F, .holdLeft = -5.2F, .holdRight = -6});
        model.setPlaybackLength(model.takes().front().seconds);
        model.setPlaybackPosition(seconds);
        model.setPlaying(model.takes().front());
    }

    void deckPlaying(AppModel& model)
    {
        deckReady(model);
        play(model, 25 * 60 + 4);
    }

    void deckPaused(AppModel& model)
    {
        deckReady(model);
        play(model, 3600 + 12 * 60 + 47);
        model.setPlaybackPaused(true);
    }

    void deckNoSource(AppModel& model)
    {
        model.setAccessDecided(true);
    }

    void windowAdvanced(AppModel& model)
    {
        model.setIsAdvanced(true);
        connectSource(model, 10);
        setFindings(model,
            {Check::level, Severity::warning, u"Hot: peak -2 dB"_s,
                u"Two tracks in a blend add a few dB. Bring the master down until one track peaks between -10 and -6 dB."_s});
        hear(model, -1.8F);
        model.setLevels({.left = -4.9F, .right = -5.3F, .holdLeft = -1.8F, .holdRight = -2.6F});
        record(model, 1h + 2min + 47s, -1.8F);
    }

}  // namespace

std::vector<SnapshotScene> snapshotScenes()
{
    return {
        {u"deck-ready"_s, deckReady},
        {u"deck-recording"_s, deckRecording},
        {u"deck-clipped"_s, deckClipped},
        {u"deck-no-source"_s, deckNoSource},
        {u"window-advanced"_s, windowAdvanced},
        {u"deck-playing"_s, deckPlaying},
        {u"deck-paused"_s, deckPaused},
        {u"window-playing"_s,
            [](AppModel& model) {
                deckPlaying(model);
                model.setIsAdvanced(true);
            }},
        {u"takes-playing"_s,
            [](AppModel& model) {
                deckPaused(model);
                model.setShowsTakes(true);
            }},
        {u"takes"_s,
            [](AppModel& model) {
                deckReady(model);
                model.setShowsTakes(true);
            }},
        {u"settings"_s,
            [](AppModel& model) {
                deckReady(model);
                model.setIsAdvanced(true);
                model.setShowsSettings(true);
            }},
    };
}

}  // namespace vantiro
