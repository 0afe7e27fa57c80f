// SPDX-License-Identifier: GPL-3.0-or-later
#include "tool/Listening.h"

#include "core/capture/SourceCapture.h"
#include "core/foundation/Decibels.h"
#include "core/recorder/VantiroPaths.h"
#include "core/sources/KnownDJApps.h"
#include "tool/SignalWatch.h"
#include "tool/Terminal.h"

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    /// A line that stands on the terminal while this lives. Whoever reads a file or a pipe gets nothing of it.
    class PassingLine {
    public:
        explicit PassingLine(const QString& line)
        {
            if (Terminal::isInteractive()) {
                Terminal::rewriteLine(line);
            }
        }
        ~PassingLine()
        {
            if (Terminal::isInteractive()) {
                Terminal::rewriteLine(QString());
            }
        }

        PassingLine(const PassingLine&) = delete;
        PassingLine& operator=(const PassingLine&) = delete;
    };

    Result<void> audioIsThere(AudioPlatform& audio)
    {
        if (audio.isAvailable()) {
            return {};
        }
        return captureFailure(u"PipeWire is not running, so there is no audio to record. Start it and try again."_s);
    }

    /// The result, unless the user had enough before it was there.
    template <class Value>
    Result<Value> unlessStopped(SignalWatch& signals, Value value)
    {
        if (signals.stopRequested()) {
            return captureFailure(u"stopped while listening"_s);
        }
        return value;
    }

    QString inputCount(std::size_t count)
    {
        return count == 1 ? u"1 input"_s : u"%1 inputs"_s.arg(count);
    }

    PreflightFacts::Measured measureDevice(AudioPlatform& audio, SignalWatch& signals, const QString& uid)
    {
        const auto device = audio.device(uid);
        if (!device) {
            return {.sourceName = uid};
        }
        const PassingLine line(u"Listening to %1…"_s.arg(device->name));
        const auto observations =
            SourceProbe::observe(audio, {*device}, {.cancelled = [&signals] { return signals.stopRequested(); }});
        return {.sourceName = device->name, .peakDB = observations.front().peakDB};
    }

    PreflightFacts::Measured measureApp(AudioPlatform& audio, SignalWatch& signals, const SourceRef& source)
    {
        const auto app = SourceCapture::open({.source = source}, audio, posixTakeStorage());
        if (!app) {
            return {.sourceName = source.id};
        }
        const PassingLine line(u"Listening to %1…"_s.arg((*app)->name()));
        PreflightFacts::Measured measured{.sourceName = (*app)->name(), .tapRate = (*app)->capture().sampleRate()};
        if ((*app)->capture().start()) {
            signals.wait(SourceProbe::usualTime);
            measured.peakDB = decibels((*app)->stop().peak);
        }
        return measured;
    }

}  // namespace

namespace Listening {

    Result<FoundSources> find(AudioPlatform& audio, SignalWatch& signals, std::chrono::milliseconds listenFor)
    {
        if (auto there = audioIsThere(audio); !there) {
            return std::unexpected(there.error());
        }
        std::optional<PassingLine> line;
        if (listenFor > 0ms) {
            line.emplace(u"Listening to %1…"_s.arg(inputCount(inputDevices(audio).size())));
        }
        return unlessStopped(signals,
            SourceProbe::find(audio, SourceMemory::load(VantiroPaths::sourcesFile()),
                {.djApps = KnownDJApps::prefixes(VantiroPaths::djAppsFile()),
                    .listenFor = listenFor,
                    .cancelled = [&signals] { return signals.stopRequested(); }}));
    }

    Result<PreflightFacts::Measured> measure(AudioPlatform& audio, SignalWatch& signals, const SourceRef& source)
    {
        if (auto there = audioIsThere(audio); !there) {
            return std::unexpected(there.error());
        }
        return unlessStopped(signals,
            source.kind == SourceRef::Kind::device ? measureDevice(audio, signals, source.id)
                                                   : measureApp(audio, signals, source));
    }

}  // namespace Listening

}  // namespace vantiro
