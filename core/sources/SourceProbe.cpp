// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/SourceProbe.h"

#include "core/capture/SourceCapture.h"
#include "core/foundation/Decibels.h"
#include "core/sources/KnownDJApps.h"

#include <algorithm>
#include <numeric>
#include <thread>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;

    /// A device that opens later than this is heard for a shorter time, so that one slow device does not hold up all.
    constexpr auto openingGrace = 250ms;
    constexpr auto cancelledEvery = 20ms;

    /// What one pair of ears heard.
    struct Heard {
        std::optional<float> peak;  ///< Linear; absent if no audio came.
        double seconds = 0;         ///< Of audio.
        bool steadyTone = false;

        /// A program whose sound comes by way of links that were just made begins with zeros, and on a busy machine an
        /// opening can take most of the time there is.
        [[nodiscard]] bool provesSilence(std::chrono::milliseconds listenFor) const
        {
            return peak == 0.0F && seconds >= std::chrono::duration<double>(listenFor).count() / 2;
        }
    };

    bool mayBeOpened(const AudioDevice& device)
    {
        return device.transport != QLatin1StringView("bluetooth") && device.transport != QLatin1StringView("continuity")
            && device.transport != QLatin1StringView("airplay");
    }

    std::vector<std::int64_t> allChannels(const AudioDevice& device)
    {
        std::vector<std::int64_t> channels(static_cast<std::size_t>(device.inputChannels));
        std::iota(channels.begin(), channels.end(), 1);
        return channels;
    }

    /// Listens to one source until the time is over.
    Heard hear(AudioPlatform& audio, const SourceCapture::Options& source, const SourceProbe::Options& options,
        Clock::time_point end)
    {
        const auto capture = SourceCapture::open(source, audio, posixTakeStorage());
        if (!capture || !(*capture)->capture().start()) {
            return {};
        }
        end = std::min(end, Clock::now() + options.listenFor);
        while (Clock::now() < end && !(options.cancelled && options.cancelled())) {
            std::this_thread::sleep_until(std::min(end, Clock::now() + cancelledEvery));
        }
        const CaptureStats stats = (*capture)->stop();
        return stats.frames > 0
            ? Heard{.peak = stats.peak, .seconds = stats.seconds(), .steadyTone = stats.steadyTone.value_or(false)}
            : Heard{};
    }

    SourceObservation observation(const AudioDevice& device)
    {
        return {.ref = SourceRef::device(device.uid),
            .name = device.name,
            .transport = device.transport,
            .channels = device.inputChannels,
            .inputTerminal = device.inputTerminal};
    }

    /// The known DJ programs; a program that has several entries appears once.
    std::vector<AudioProcess> djPrograms(AudioPlatform& audio, const QStringList& prefixes)
    {
        const std::vector<AudioProcess> processes = audio.processes();
        std::vector<AudioProcess> found;
        for (const AudioProcess& process : processes) {
            const bool isKnown = process.bundleID && KnownDJApps::contains(*process.bundleID, prefixes);
            const bool isNew = isKnown && std::ranges::none_of(found, [&](const AudioProcess& other) {
                return other.bundleID->compare(*process.bundleID, Qt::CaseInsensitive) == 0;
            });
            if (isNew) {
                found.push_back(AudioProcesses::withBundleID(processes, *process.bundleID).value_or(process));
            }
        }
        return found;
    }

    SourceObservation observation(const AudioProcess& process)
    {
        return {.ref = SourceRef::app(*process.bundleID),
            .name = process.name,
            .channels = 2,
            .isKnownDJApp = true,
            .isPlaying = process.isPlaying};
    }

}  // namespace

QStringList FoundSources::uids() const
{
    QStringList uids;
    for (const AudioDevice& device : devices) {
        uids << device.uid;
    }
    return uids;
}

std::optional<SourceRef> FoundSources::rememberedPick() const
{
    const bool isThere = remembered && std::ranges::any_of(sources, [this](const RankedSource& source) {
        return source.observation.ref == *remembered;
    });
    return isThere ? remembered : std::nullopt;
}

std::optional<SourceRef> FoundSources::pick() const
{
    if (auto chosen = rememberedPick()) {
        return chosen;
    }
    const auto ranked = SourceRanker::automaticPick(sources);
    return ranked ? std::optional(ranked->observation.ref) : std::nullopt;
}

namespace SourceProbe {

    std::vector<SourceObservation> observe(
        AudioPlatform& audio, const std::vector<AudioDevice>& devices, const Options& options)
    {
        const std::vector<AudioProcess> programs = djPrograms(audio, options.djApps);
        std::vector<SourceObservation> observations;
        observations.reserve(devices.size() + programs.size());
        std::ranges::transform(
            devices, std::back_inserter(observations), [](const AudioDevice& device) { return observation(device); });
        std::ranges::transform(programs, std::back_inserter(observations),
            [](const AudioProcess& program) { return observation(program); });
        if (options.listenFor <= 0ms) {
            return observations;
        }

        const auto end = Clock::now() + options.listenFor + openingGrace;
        // Each thread fills the observation that is its own; the vector no longer grows.
        std::vector<std::jthread> ears;
        for (std::size_t index = 0; index < devices.size(); ++index) {
            if (mayBeOpened(devices[index])) {
                ears.emplace_back([&, index] {
                    SourceObservation& own = observations[index];
                    const Heard heard =
                        hear(audio, {.source = own.ref, .channels = allChannels(devices[index])}, options, end);
                    own.peakDB = heard.peak ? std::optional(decibels(*heard.peak)) : std::nullopt;
                    own.steadyTone = heard.steadyTone;
                });
            }
        }
        for (std::size_t index = 0; index < programs.size(); ++index) {
            if (programs[index].isPlaying) {
                ears.emplace_back([&, index] {
                    SourceObservation& own = observations[devices.size() + index];
                    const Heard heard = hear(audio, {.source = own.ref, .pid = programs[index].pid}, options, end);
                    own.isPlaying = !heard.provesSilence(options.listenFor);
                });
            }
        }
        ears.clear();  // Joins them.
        return observations;
    }

    FoundSources find(AudioPlatform& audio, const SourceMemory& memory, const Options& options)
    {
        FoundSources found{.devices = inputDevices(audio), .sources = {}, .remembered = {}};
        found.remembered = memory.choice(found.uids());
        found.sources = SourceRanker::rank(observe(audio, found.devices, options), found.remembered);
        return found;
    }

}  // namespace SourceProbe

}  // namespace vantiro
