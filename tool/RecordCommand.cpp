// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Json.h"
#include "core/foundation/Log.h"
#include "core/foundation/SettingsStore.h"
#include "core/recorder/EndingWords.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/TakeRecorder.h"
#include "core/recorder/TakesFolder.h"
#include "core/recorder/VantiroPaths.h"
#include "core/sources/ChannelPair.h"
#include "platform/DesktopPlatform.h"
#include "tool/AccountText.h"
#include "tool/Arguments.h"
#include "tool/Commands.h"
#include "tool/Listening.h"
#include "tool/MeterLine.h"
#include "tool/SignalWatch.h"
#include "tool/SourcesText.h"
#include "tool/Terminal.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    constexpr auto tickEvery = 100ms;
    constexpr int bytesPerSample = 3;

    enum class Manner {
        foreground,
        detached,
    };

    struct Wanted {
        TakeRecorder::Request request;
        bool isSourceNamed = false;
        Manner manner = Manner::foreground;
        bool asJson = false;
    };

    Result<std::vector<std::int64_t>> channelList(const QString& text)
    {
        std::vector<std::int64_t> channels;
        const QStringList words = text.isEmpty() ? QStringList() : text.split(u',');
        for (const QString& word : words) {
            bool valid = false;
            channels.push_back(word.toLongLong(&valid));
            if (!valid) {
                return captureFailure(u"--channels takes numbers with commas between them, such as 3,4"_s);
            }
        }
        return channels;
    }

    Result<Wanted> parse(const QStringList& words)
    {
        const auto arguments =
            Arguments::parse(words, {u"--device"_s, u"--app"_s, u"--channels"_s, u"--format"_s, u"--out"_s},
                {u"--detached"_s, u"--force"_s, u"--json"_s});
        if (!arguments) {
            return std::unexpected(arguments.error());
        }
        Wanted wanted;
        wanted.manner = arguments->has(u"--detached"_s) ? Manner::detached : Manner::foreground;
        wanted.asJson = arguments->has(u"--json"_s);
        const auto source = arguments->source();
        if (!source) {
            return std::unexpected(source.error());
        }
        if (!*source && wanted.manner == Manner::detached) {
            return captureFailure(
                u"--detached needs a source: --device UID or --app ID ('vantiro sources' lists them)"_s);
        }
        wanted.isSourceNamed = source->has_value();
        wanted.request.source = source->value_or(SourceRef{});
        if (const auto channels = arguments->value(u"--channels"_s)) {
            auto list = channelList(*channels);
            if (!list) {
                return std::unexpected(list.error());
            }
            wanted.request.channels = *std::move(list);
        }
        const auto out = arguments->value(u"--out"_s);
        const auto formatWord = arguments->value(u"--format"_s);
        // Whoever names a file ending in .wav wants a WAV file.
        const QString ending = out ? QFileInfo(*out).suffix().toLower() : QString();
        const auto format = formatWord ? takeFormat(*formatWord) : takeFormat(ending).value_or(TakeFormat::caf);
        if (!format) {
            return captureFailure(u"--format takes caf or wav"_s);
        }
        wanted.request.format = *format;
        if (out) {
            wanted.request.output = QFileInfo(*out).absoluteFilePath();
        }
        const bool refuse = wanted.manner == Manner::foreground && !arguments->has(u"--force"_s);
        wanted.request.existing = refuse ? TakeRecorder::ExistingFile::refuse : TakeRecorder::ExistingFile::rename;
        return wanted;
    }

    /// Where takes go, unless the call says otherwise. A disk that is not there is told, not made up for with a folder
    /// in its place.
    Result<QString> pathInTakesFolder(TakeFormat format)
    {
        const QString folder = TakesFolder::current();
        if (const auto disk = PreflightFacts::volume(folder).missingVolume) {
            return captureFailure(
                u"%1 is not connected, and the takes folder is on it. Connect it, or name a file with --out."_s.arg(
                    *disk));
        }
        return QDir(folder).filePath(VantiroPaths::newTakeName(format));
    }

    /// The source that carries the mix, as the window would pick it.
    Result<SourceRef> findSource(AudioPlatform& audio, SignalWatch& signals, bool asJson)
    {
        // Nobody should wait for what cannot begin.
        if (const auto running = RecorderStateStore::running()) {
            return captureFailure(u"already recording: %1"_s.arg(running->path));
        }
        const auto found = Listening::find(audio, signals);
        if (!found) {
            return std::unexpected(found.error());
        }
        const auto pick = found->pick();
        const auto source = std::ranges::find_if(
            found->sources, [&pick](const RankedSource& ranked) { return pick == ranked.observation.ref; });
        if (source == found->sources.end()) {
            return captureFailure(u"Nothing that is sure to carry your mix was found: connect an audio interface, a "
                                  "mixer or a controller, start a DJ app, or name what 'vantiro sources' lists."_s);
        }
        if (!asJson) {
            const QString reasons = source->reasons.isEmpty() ? QString() : u": "_s + reasonsText(*source);
            Terminal::print(u"Found %1%2."_s.arg(source->observation.name, reasons));
        }
        return *pick;
    }

    /// The pair of channels that the user set for this source in the window.
    std::optional<std::vector<std::int64_t>> chosenChannels(AudioPlatform& audio, const SourceRef& source)
    {
        const SettingsStore settings(VantiroPaths::settingsFile(), {}, SettingsStore::BrokenFile::leave);
        const auto first = json::integer(settings.value(u"firstChannel"_s).toObject().value(source.id));
        const auto device = audio.device(source.id);
        return channelPair(source, first.value_or(1), device ? device->inputChannels : 0);
    }

    /// Fills in what the call left open.
    Result<void> complete(Wanted& wanted, AudioPlatform& audio, SignalWatch& signals)
    {
        if (!wanted.isSourceNamed) {
            auto source = findSource(audio, signals, wanted.asJson);
            if (!source) {
                return std::unexpected(source.error());
            }
            wanted.request.source = *std::move(source);
        }
        if (!wanted.request.channels && wanted.manner == Manner::foreground) {
            wanted.request.channels = chosenChannels(audio, wanted.request.source);
        }
        if (!wanted.request.output) {
            auto path = pathInTakesFolder(wanted.request.format);
            if (!path) {
                return std::unexpected(path.error());
            }
            wanted.request.output = *std::move(path);
        }
        return {};
    }

    TakeEnding runDetached(TakeRecorder& recorder, SignalWatch& signals)
    {
        while (!signals.wait(tickEvery)) {
            if (const auto ending = recorder.tick()) {
                return *ending;
            }
        }
        return TakeEnding::stopped;
    }

    TakeEnding runWithMeter(TakeRecorder& recorder, SignalWatch& signals)
    {
        Capture& capture = recorder.source().capture();
        MeterLine meter(capture.sampleRate() * static_cast<double>(capture.channels().size()) * bytesPerSample);
        while (!signals.wait(tickEvery)) {
            if (const auto ending = recorder.tick()) {
                return *ending;
            }
            Terminal::rewriteLine(meter.next(capture.takeChannelPeaks(), capture.stats().seconds(),
                posixTakeStorage().freeBytesAt(recorder.state().path)));
        }
        return TakeEnding::stopped;
    }

    void report(const TakeRecorder::Account& account, const Wanted& wanted)
    {
        if (wanted.asJson) {
            Terminal::printJson(account.state.toJsonText());
        } else {
            for (const QString& line : accountText(account.state)) {
                Terminal::print(line);
            }
        }
        if (const auto sentence = EndingWords::sentence(account.state)) {
            logLine(*sentence);
        }
    }

}  // namespace

int recordCommand(const QStringList& words)
{
    auto wanted = parse(words);
    if (!wanted) {
        return Terminal::misuse(errorText(wanted.error()));
    }
    SignalWatch signals;
    const Platform platform = makeDesktopPlatform();
    if (auto completed = complete(*wanted, *platform.audio, signals); !completed) {
        return Terminal::fail(errorText(completed.error()));
    }
    wanted->request.stopRequested = [&signals] { return signals.stopRequested(); };
    auto recorder = TakeRecorder::start(wanted->request, platform, posixTakeStorage());
    if (!recorder) {
        return Terminal::fail(errorText(recorder.error()));
    }
    const bool hasMeter = wanted->manner == Manner::foreground && Terminal::isInteractive() && !wanted->asJson;
    if (wanted->manner == Manner::detached) {
        logLine(u"recording %1 to %2"_s.arg((*recorder)->state().deviceName, (*recorder)->state().path));
        logLine((*recorder)->source().capture().schedulingNote());
    } else if (!wanted->asJson) {
        Terminal::print(u"Recording %1. Press Ctrl-C to end the take."_s.arg((*recorder)->state().deviceName));
    }
    const TakeEnding ending = hasMeter ? runWithMeter(**recorder, signals) : runDetached(**recorder, signals);
    if (hasMeter) {
        Terminal::endLine();
    }
    const TakeRecorder::Account account = (*recorder)->finish(ending);
    report(account, *wanted);
    return account.isWhole() ? Terminal::done : Terminal::failed;
}

}  // namespace vantiro
